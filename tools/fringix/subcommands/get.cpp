#include <fmt/format.h>

#include <memory>

#include "heads/values.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {

void defineGet(arguments::Command& command, Context& context) {
  const auto name = std::make_shared<std::string>();
  command.note("Values, in the units of the head:\n" + listValues(Access::read));
  addAddress(command, context);
  command.positional("NAME", name.get(), "Name of the value, see below").required();
  command.run([name, &context] {
    const Value& value = findValue(*name, Access::read);
    fmt::print("{}\n", value.read(openHead(context)));
  });
}

}  // namespace fringix::tool
