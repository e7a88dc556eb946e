#include <fmt/format.h>

#include <memory>

#include "console/json.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct GpioOptions {
  std::int32_t line = 0;
  std::int32_t value = 0;
};

void addLine(arguments::Command& command, GpioOptions& options) {
  command.positional("LINE", &options.line, "Number of the line, as the head counts them").required();
}

void defineReadLine(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<GpioOptions>();
  addAddress(command, context);
  addLine(command, *options);
  command.run([options, &context] {
    const std::int32_t state = openHead(context).gpio(options->line);
    fmt::print("{}\n", context.json ? Json::object({{"line", options->line}, {"value", state}}).indented() : std::to_string(state));
  });
}

void defineSetLine(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<GpioOptions>();
  addAddress(command, context);
  addLine(command, *options);
  command.positional("VALUE", &options->value, "The new state of the line").required();
  command.run([options, &context] { openHead(context).setGpio(options->line, options->value); });
}

}  // namespace

void defineGpio(arguments::Command& command, Context& context) {
  defineReadLine(command.subcommand("read", "Print the state of a line"), context);
  defineSetLine(command.subcommand("set", "Set a line"), context);
}

}  // namespace fringix::tool
