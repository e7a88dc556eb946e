#include <fmt/format.h>

#include <memory>

#include "console/json.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {

void defineSerial(arguments::Command& command, Context& context) {
  const auto text = std::make_shared<std::string>();
  addAddress(command, context);
  command.positional("COMMAND", text.get(), "Text for the device at the serial port").required();
  command.run([text, &context] {
    const std::string reply = openHead(context).serial(*text);
    fmt::print("{}\n", context.json ? Json::object({{"reply", reply}}).indented() : reply);
  });
}

}  // namespace fringix::tool
