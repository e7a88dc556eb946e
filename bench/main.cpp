// fringix-bench: what the library costs on top of the wire.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "arguments/parse.h"
#include "comparisons.h"
#include "machine.h"
#include "measurement.h"
#include "private_network.h"
#include "recordings.h"
#include "report.h"
#include "searches.h"
#include "triggers.h"

namespace {

using namespace fringix::bench;

struct Options {
  Plan plan;
  bool quick = false;
  bool check = false;
  std::string only;
  std::string json;
};

void declare(fringix::arguments::Command& program, Options& options) {
  program.option("--rounds", &options.plan.rounds, "Rounds, each a batch of either client").range(1, 1000).valueName("N").showDefault();
  program.option("--only", &options.only, "Only the comparisons whose name contains this text").valueName("TEXT");
  program.option("--json", &options.json, "Also write the findings to this file").valueName("FILE");
  program.flag("--quick", &options.quick, "A smoke test of a few seconds; its numbers mean little");
  program.flag("--check", &options.check, "Exit with 1 when a bound is missed");
  program.flag("--against-itself", &options.plan.againstItself,
               "Measure the minimal client in place of the library: the method's own scatter");
}

Plan settled(const Options& options) {
  Plan plan = options.plan;
  const std::vector<std::size_t> cores = allowedCores();
  plan.clientCore = cores.front();
  plan.serverCore = cores.back();
  if (options.quick) {
    plan.rounds = 3;
    plan.batchSeconds = 0.02;
  }
  return plan;
}

template <class Table>
void runTable(const Table& table, const Plan& plan, const std::string& only, std::vector<Finding>& all) {
  for (const auto& comparison : table) {
    if (comparison.name.find(only) == std::string::npos) continue;
    const std::vector<Finding> findings = findingsOf(measure(comparison, plan));
    printFindings(findings);
    std::fflush(stdout);
    all.insert(all.end(), findings.begin(), findings.end());
  }
}

std::vector<Finding> runAll(const Plan& plan, const std::string& only, bool inPrivateNetworks) {
  std::vector<Finding> all;
  runTable(comparisons(), plan, only, all);
  runTable(triggerComparisons(), plan, only, all);
  if (inPrivateNetworks) runTable(recordingComparisons(), plan, only, all);
  if (inPrivateNetworks) runTable(searchComparisons(), plan, only, all);
  return all;
}

// Every large buffer is a mapping of its own, page-aligned like any other, whatever was freed before: a fixed threshold no longer
// adapts. Otherwise a comparison's result depends on the ones before it.
void placeBuffersAlike() { mallopt(M_MMAP_THRESHOLD, 128 * 1024); }

int run(const Options& options) {
  placeBuffersAlike();
  const bool inPrivateNetworks = enterPrivateNetworks();
  if (!inPrivateNetworks) std::puts("Note: no networks of the benchmark's own here, so no searches.");
  if (!inPrivateNetworks || !fixConnections()) std::puts("Note: connections differ by chance here, expect scatter.");
  const Plan plan = settled(options);
  const MachineFacts machine = machineFacts();
  printHeading(machine, plan);
  const std::vector<Finding> findings = runAll(plan, options.only, inPrivateNetworks);
  if (!options.json.empty()) writeJson(options.json, machine, plan, findings);
  const auto missed = std::count_if(findings.begin(), findings.end(), [](const Finding& finding) { return !finding.met; });
  if (missed > 0) std::printf("\nNote: %td bounds missed.\n", missed);
  return options.check && missed > 0 ? 1 : 0;
}

int parseAndRun(int argc, char** argv) {
  Options options;
  fringix::arguments::Command program("fringix-bench", "Compares the library with a hand-written client on loopback.");
  declare(program, options);
  try {
    if (!fringix::arguments::parse(program, argc, argv)) return 0;
  } catch (const fringix::arguments::UsageError& error) {
    std::fprintf(stderr, "%s\nRun with --help for more information.\n", error.what());
    return 2;
  }
  return run(options);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return parseAndRun(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fringix-bench: %s\n", error.what());
    return 2;
  }
}
