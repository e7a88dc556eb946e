#include <fmt/format.h>

#include <memory>

#include "subcommands/subcommand.h"

namespace fringix::tool {

void defineSerial(CLI::App& app, Context& context) {
  const auto command = std::make_shared<std::string>();
  addAddress(app, context);
  app.add_option("COMMAND", *command, "Text for the device at the serial port")->required()->type_name("");
  app.callback([command, &context] { fmt::print("{}\n", openHead(context).serial(*command)); });
}

}  // namespace fringix::tool
