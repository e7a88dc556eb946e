#include <fmt/format.h>

#include <memory>

#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct GpioOptions {
  std::int32_t line = 0;
  std::int32_t value = 0;
};

void addLine(CLI::App& app, GpioOptions& options) {
  app.add_option("LINE", options.line, "Number of the line, as the head counts them")->required()->type_name("");
}

void defineReadLine(CLI::App& app, Context& context) {
  const auto options = std::make_shared<GpioOptions>();
  addAddress(app, context);
  addLine(app, *options);
  app.callback([options, &context] { fmt::print("{}\n", openHead(context).gpio(options->line)); });
}

void defineSetLine(CLI::App& app, Context& context) {
  const auto options = std::make_shared<GpioOptions>();
  addAddress(app, context);
  addLine(app, *options);
  app.add_option("VALUE", options->value, "The new state of the line")->required()->type_name("");
  app.callback([options, &context] { openHead(context).setGpio(options->line, options->value); });
}

}  // namespace

void defineGpio(CLI::App& app, Context& context) {
  app.require_subcommand(1);
  defineReadLine(*app.add_subcommand("read", "Print the state of a line"), context);
  defineSetLine(*app.add_subcommand("set", "Set a line"), context);
}

}  // namespace fringix::tool
