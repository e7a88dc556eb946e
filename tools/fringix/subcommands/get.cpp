#include <fmt/format.h>

#include <memory>

#include "console/json.h"
#include "heads/values.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

void printJson(const Value& value, std::int64_t number) {
  Json json = Json::object({{"name", value.name}, {"value", number}});
  if (value.unit != nullptr) json.add("unit", value.unit);
  fmt::print("{}\n", json.indented());
}

}  // namespace

void defineGet(arguments::Command& command, Context& context) {
  const auto name = std::make_shared<std::string>();
  command.note("Values, in the units of the head:" + listValues(Access::read));
  addAddress(command, context);
  command.positional("NAME", name.get(), "Name of the value, \"fringix get --help\" lists them").required();
  command.run([name, &context] {
    const Value& value = findValue(*name, Access::read);
    const std::int64_t number = value.read(openHead(context));
    context.json ? printJson(value, number) : fmt::print("{}\n", number);
  });
}

}  // namespace fringix::tool
