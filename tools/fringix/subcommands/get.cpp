#include <fmt/format.h>

#include <memory>

#include "heads/values.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {

void defineGet(CLI::App& app, Context& context) {
  const auto name = std::make_shared<std::string>();
  addAddress(app, context);
  app.add_option("NAME", *name, "Name of the value, see below")->required()->type_name("");
  app.footer(fmt::format("Values, in the units of the head:\n{}\n{}", listValues(Access::read), app.get_footer()));
  app.callback([name, &context] {
    const Value& value = findValue(*name, Access::read);
    fmt::print("{}\n", value.read(openHead(context)));
  });
}

}  // namespace fringix::tool
