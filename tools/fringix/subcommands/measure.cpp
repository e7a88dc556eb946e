#include <fmt/format.h>

#include <chrono>
#include <memory>

#include "console/progress_bar.h"
#include "console/terminal.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct MeasureOptions {
  std::uint32_t sequence = 0;
  std::uint32_t from = 0;
  std::uint32_t to = 0;
};

void measure(const MeasureOptions& options, bool inPart, Context& context) {
  const Device head = openHead(context);
  const auto start = std::chrono::steady_clock::now();
  {
    const ElapsedTime elapsed(stderr, isTerminal(stderr), "measuring");
    inPart ? head.measure(options.sequence, options.from, options.to) : head.measure(options.sequence);
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  const std::string part = inPart ? fmt::format(", images {} to {},", options.from, options.to) : "";
  fmt::print("measured sequence {}{} in {:.2f} s\n", options.sequence, part, time.count());
}

}  // namespace

void defineMeasure(CLI::App& app, Context& context) {
  const auto options = std::make_shared<MeasureOptions>();
  addAddress(app, context);
  app.add_option("SEQUENCE", options->sequence, "Number of the sequence, as \"fringix pattern alloc\" printed it")
      ->required()
      ->type_name("");
  CLI::Option* from = app.add_option("--from", options->from, "First image of the sequence, when it is not all of them")->type_name("N");
  CLI::Option* to = app.add_option("--to", options->to, "Last image of the sequence")->type_name("N")->needs(from);
  from->needs(to);
  app.footer("Blocks until the head has finished; a measurement of more than 30 seconds counts as a broken\nconnection. " +
             std::string("\"fringix picture\" fetches what the head has stored.\n\n") + app.get_footer());
  app.callback([options, from, &context] { measure(*options, from->count() > 0, context); });
}

}  // namespace fringix::tool
