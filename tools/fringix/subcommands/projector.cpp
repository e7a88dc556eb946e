#include <fmt/format.h>

#include <memory>

#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct ProjectorOptions {
  std::uint32_t command = 0;
  std::uint32_t argument = 0;
};

void execute(const ProjectorOptions& options, Context& context) {
  const auto results = openHead(context).projector(static_cast<std::uint8_t>(options.command), static_cast<std::uint8_t>(options.argument));
  fmt::print("{} {} {}\n", results[0], results[1], results[2]);
}

}  // namespace

void defineProjector(CLI::App& app, Context& context) {
  const auto options = std::make_shared<ProjectorOptions>();
  const auto byteRange = CLI::Range(0U, 255U).description("");
  addAddress(app, context);
  app.add_option("COMMAND", options->command, "Number of the command, 0 to 255, as the projector defines it")
      ->required()
      ->type_name("")
      ->check(byteRange);
  app.add_option("ARGUMENT", options->argument, "Its argument, 0 to 255")->required()->type_name("")->check(byteRange);
  app.callback([options, &context] { execute(*options, context); });
}

}  // namespace fringix::tool
