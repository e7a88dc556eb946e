#include <fmt/format.h>

#include <memory>

#include "console/json.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct IniOptions {
  std::string section;
  std::string key;
  std::int32_t value = 0;
};

void addKey(arguments::Command& command, IniOptions& options) {
  command.positional("SECTION", &options.section, "Section of the configuration").required();
  command.positional("KEY", &options.key, "Key in the section").required();
}

void defineRead(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<IniOptions>();
  addAddress(command, context);
  addKey(command, *options);
  command.run([options, &context] {
    const std::int32_t value = openHead(context).readIni(options->section, options->key);
    const Json json = Json::object({{"section", options->section}, {"key", options->key}, {"value", value}});
    fmt::print("{}\n", context.json ? json.indented() : std::to_string(value));
  });
}

void defineWrite(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<IniOptions>();
  addAddress(command, context);
  addKey(command, *options);
  command.positional("VALUE", &options->value, "The new value; -- goes before a negative one").required();
  command.run([options, &context] { openHead(context).writeIni(options->section, options->key, options->value); });
}

}  // namespace

void defineIni(arguments::Command& command, Context& context) {
  defineRead(command.subcommand("read", "Print an integer of the head's configuration"), context);
  defineWrite(command.subcommand("write", "Write an integer of the head's configuration"), context);
}

}  // namespace fringix::tool
