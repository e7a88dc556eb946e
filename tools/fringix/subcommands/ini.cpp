#include <fmt/format.h>

#include <memory>

#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct IniOptions {
  std::string section;
  std::string key;
  std::int32_t value = 0;
};

void addKey(CLI::App& app, IniOptions& options) {
  app.add_option("SECTION", options.section, "Section of the configuration")->required()->type_name("");
  app.add_option("KEY", options.key, "Key in the section")->required()->type_name("");
}

void defineRead(CLI::App& app, Context& context) {
  const auto options = std::make_shared<IniOptions>();
  addAddress(app, context);
  addKey(app, *options);
  app.callback([options, &context] { fmt::print("{}\n", openHead(context).readIni(options->section, options->key)); });
}

void defineWrite(CLI::App& app, Context& context) {
  const auto options = std::make_shared<IniOptions>();
  addAddress(app, context);
  addKey(app, *options);
  app.add_option("VALUE", options->value, "The new value; -- goes before a negative one")->required()->type_name("");
  app.callback([options, &context] { openHead(context).writeIni(options->section, options->key, options->value); });
}

}  // namespace

void defineIni(CLI::App& app, Context& context) {
  app.require_subcommand(1);
  defineRead(*app.add_subcommand("read", "Print an integer of the head's configuration"), context);
  defineWrite(*app.add_subcommand("write", "Write an integer of the head's configuration"), context);
}

}  // namespace fringix::tool
