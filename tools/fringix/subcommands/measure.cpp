#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <optional>

#include "console/json.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct MeasureOptions {
  std::uint32_t sequence = 0;
  std::optional<std::uint32_t> from;  // with `to`, or all of it
  std::optional<std::uint32_t> to;
};

void report(const MeasureOptions& options, double seconds, bool asJson) {
  if (!asJson) {
    const std::string part = options.from ? fmt::format(", images {} to {},", *options.from, *options.to) : "";
    return fmt::print("measured sequence {}{} in {:.2f} s\n", options.sequence, part, seconds);
  }
  Json json = Json::object({{"sequence", options.sequence}});
  if (options.from) json.add("from", *options.from);
  if (options.to) json.add("to", *options.to);
  json.add("seconds", seconds);
  fmt::print("{}\n", json.indented());
}

void measure(const MeasureOptions& options, Context& context) {
  const bool inPart = options.from.has_value();
  if (inPart != options.to.has_value()) throw arguments::UsageError(inPart ? "--from needs --to" : "--to needs --from");
  const Device head = openHead(context);
  const auto start = std::chrono::steady_clock::now();
  {
    const ElapsedTime elapsed(stderr, isTerminal(stderr), "measuring");
    inPart ? head.measure(options.sequence, *options.from, *options.to) : head.measure(options.sequence);
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  report(options, time.count(), context.json);
}

}  // namespace

void defineMeasure(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<MeasureOptions>();
  command.note(
      "Blocks until the head has finished; a measurement of more than 30 seconds counts as a broken\nconnection. "
      "\"fringix picture\" fetches what the head has stored.");
  addAddress(command, context);
  command.positional("SEQUENCE", &options->sequence, "Number of the sequence, as \"fringix pattern alloc\" printed it").required();
  command.option("--from", &options->from, "First image of the sequence, when it is not all of them; needs --to").valueName("N");
  command.option("--to", &options->to, "Last image of the sequence; needs --from").valueName("N");
  command.run([options, &context] { measure(*options, context); });
}

}  // namespace fringix::tool
