// fringix-soak: ./run soak.
#include <cstdio>
#include <exception>

#include "arguments/duration.h"
#include "arguments/parse.h"
#include "soak/companions.h"
#include "soak/soak.h"

namespace {

using namespace fringix::test;
using fringix::arguments::Command;

struct Options {
  SoakPlan plan;
  std::string follow;
};

void declare(Command& program, Options& options) {
  SoakPlan& plan = options.plan;
  program
      .positional(
          "TIME", [&](const std::string& text) { plan.duration = fringix::arguments::toDuration(text); }, "How long, as 20s or 30min")
      .showDefault("not at all");
  program
      .option(
          "--seed", [&](std::int64_t seed) { plan.seed = static_cast<std::uint64_t>(seed); }, "From which all threads' choices follow")
      .atLeast(0)
      .valueName("N")
      .showDefault(std::to_string(plan.seed));
  program.option("--heads", &plan.heads, "Simulated heads").range(1, 64).valueName("N").showDefault();
  program.option("--threads", &plan.threads, "Threads").range(1, 64).valueName("N").showDefault();
  program.option("--sessions", &plan.slots, "Sessions at once").range(1, 200).valueName("N").showDefault();
  program.option("--rate", &plan.rate, "Operations a second of each thread").range(0.1, 10000).valueName("N").showDefault();
  program.option("--triggers", &plan.triggers, "Triggers a second").range(1, 10000).valueName("N").showDefault();
  program.option("--faults", &plan.faults, "Share of the commands and triggers that go wrong").range(0, 1).valueName("X").showDefault();
  program.option("--leak", &plan.leak, "Bytes that each operation loses, to see that it is noticed").valueName("N").showDefault();
  program.option("--follow", &options.follow, "Only count the triggers of this head, until the process is ended").valueName("ADDRESS");
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  Command program("fringix-soak", "Uses many heads that do wrong for a long time, and looks whether anything is wrong or grows.");
  declare(program, options);
  int status = 0;
  program.run([&] { status = !options.follow.empty() ? runFollower(options.follow) : soak(options.plan) ? 0 : 1; });
  try {
    fringix::arguments::parse(program, argc, argv);
    return status;
  } catch (const fringix::arguments::UsageError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
