#include <fmt/format.h>

#include <memory>

#include "console/json.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct ProjectorOptions {
  std::uint32_t command = 0;
  std::uint32_t argument = 0;
};

void execute(const ProjectorOptions& options, Context& context) {
  const auto results = openHead(context).projector(static_cast<std::uint8_t>(options.command), static_cast<std::uint8_t>(options.argument));
  const Json json = Json::object({{"results", Json::array({results[0], results[1], results[2]})}});
  fmt::print("{}\n", context.json ? json.indented() : fmt::format("{} {} {}", results[0], results[1], results[2]));
}

}  // namespace

void defineProjector(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<ProjectorOptions>();
  addAddress(command, context);
  command.positional("COMMAND", &options->command, "Number of the command, 0 to 255, as the projector defines it").required().range(0, 255);
  command.positional("ARGUMENT", &options->argument, "Its argument, 0 to 255").required().range(0, 255);
  command.run([options, &context] { execute(*options, context); });
}

}  // namespace fringix::tool
