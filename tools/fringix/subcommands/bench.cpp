#include <fmt/format.h>

#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "benchmark/diagram.h"
#include "benchmark/measuring.h"
#include "benchmark/tables.h"
#include "console/output.h"
#include "console/progress_bar.h"
#include "console/system_name.h"
#include "console/terminal.h"
#include "files/files.h"
#include "heads/model_name.h"
#include "png/png_writer.h"
#include "subcommands/subcommand.h"
#include "times/wall_time.h"

namespace fringix::tool {
namespace {

constexpr std::uint64_t largestFile = std::uint64_t{1} << 24;
constexpr std::chrono::seconds searchLimit{3};

constexpr const char* note =
    "Tells how long a command takes, how many pictures and patterns cross the network in a second, and\n"
    "on request what a scan takes and how soon a trigger is heard. Without --scan and --trigger-line\n"
    "it leaves nothing changed on the head: what it uploads to is a sequence of its own, which it frees.\n"
    "Ctrl-C ends it with what was measured until then. docs/bench.md tells what each figure means.";

struct BenchOptions {
  double seconds = 10;
  BenchTask task;
  std::string picture;
  std::vector<std::string> compared;
};

Findings factsOf(const Device& head, const std::string& address) {
  Findings findings;
  findings.date = universalText(std::chrono::system_clock::now(), "%Y-%m-%dT%H:%M:%SZ");
  const Key key = head.key();
  findings.head = {address, key.serial, modelName(address, searchLimit), key.protocolVersion, head.cameraSize(), head.projectorSize()};
  findings.libraryVersion = libraryVersion();
  findings.system = systemName();
  return findings;
}

void addUnasked(const BenchTask& task, Findings& findings) {
  if (!task.scan) findings.notMeasured.push_back({"scan", "scan", "projects patterns; --scan measures it"});
  if (!task.triggerLine)
    findings.notMeasured.push_back({"trigger", "trigger", "needs an output wired to the trigger input; --trigger-line N measures it"});
}

void draw(const std::string& path, const Findings& findings) {
  if (path.empty() || findings.measured.empty()) return;
  const png::Raster raster = drawDistributions(findings);
  files::writeFile(path, png::encodePngRgb24(raster.width, raster.height, raster.samples));
}

void print(const Findings& findings) {
  fmt::print("{}", tableOf(findings));
  if (!findings.measured.empty()) fmt::print("\n{}", histogramOf(findings.measured.front()));
  if (!findings.complete) fmt::print("\nEnded before everything was measured.\n");
  fmt::print("\nOn the head {}.\n", findings.changed.empty() ? "nothing has changed" : findings.changed);
}

void report(const BenchOptions& options, const Context& context, const Findings& findings) {
  context.json ? fmt::print("{}\n", describe(findings).indented()) : print(findings);
  flushOutput();
  draw(options.picture, findings);
}

// What was measured before the connection broke is told, too.
void bench(const BenchOptions& options, Context& context) {
  if (!options.picture.empty()) files::requireWritable(options.picture);
  const Device head = openHead(context);
  Findings findings = factsOf(head, context.address);
  std::exception_ptr broken;
  try {
    TransientLine line(stderr, isTerminal(stderr));
    measure(head, options.task, findings, [&](const std::string& what) { line.show(fmt::format("measuring: {} ...", what)); });
  } catch (const Error&) {
    broken = std::current_exception();
  }
  addUnasked(options.task, findings);
  report(options, context, findings);
  if (broken) std::rethrow_exception(broken);
}

NamedFindings read(const std::string& path) {
  const std::vector<std::uint8_t> bytes = files::readFile(path, largestFile);
  try {
    return {path, readFindings({reinterpret_cast<const char*>(bytes.data()), bytes.size()})};
  } catch (const std::runtime_error& error) {
    throw Failure(
        {fmt::format("\"{}\" is no benchmark: {}", path, error.what()), "Give files that \"fringix bench ADDRESS --json\" has printed."});
  }
}

void compare(const BenchOptions& options, const Context& context) {
  const NamedFindings first = read(options.compared.front());
  const NamedFindings second = read(options.compared.back());
  context.json ? fmt::print("{}\n", describeComparison(first, second).indented()) : fmt::print("{}", comparisonOf(first, second));
}

void run(BenchOptions& options, Context& context) {
  const bool namesHead = context.bySerial || !context.address.empty();
  if (namesHead == !options.compared.empty())
    throw arguments::UsageError(namesHead ? "--compare needs no head: leave its address out"
                                          : "ADDRESS, --serial or --compare is required");
  if (!options.compared.empty() && !options.picture.empty()) throw arguments::UsageError("--output", "a comparison makes no picture");
  options.task.time = std::chrono::duration<double>(options.seconds);
  namesHead ? bench(options, context) : compare(options, context);
}

}  // namespace

void defineBench(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<BenchOptions>();
  addOptionalAddress(command, context);
  command.option("--seconds", &options->seconds, "How long to measure, in all; of each call there is one sample at least")
      .valueName("N")
      .range(0, 86400)
      .showDefault("10");
  command.flag("--scan", &options->task.scan, "Also scans: projects patterns, and overwrites the pictures that the head has stored");
  command
      .option("--trigger-line", &options->task.triggerLine,
              "Also triggers: sets and clears this line of the head, which has to be wired to its trigger input")
      .valueName("N");
  command.option("-o,--output", &options->picture, "Draw the distributions into this PNG file").valueName("FILE");
  command.option("--compare", &options->compared, "Two benchmarks side by side, as --json printed them, in place of a head")
      .valueCount(2)
      .valueName("FILE");
  command.note(note);
  command.run([options, &context] { run(*options, context); });
}

}  // namespace fringix::tool
