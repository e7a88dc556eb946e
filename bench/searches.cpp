#include "searches.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "announcer.h"
#include "library_session.h"
#include "machine.h"
#include "minimal_search.h"
#include "private_network.h"

namespace fringix::bench {

namespace {

constexpr std::size_t mostRounds = 7;  // a search takes nearly a second

std::size_t librarySearch() {
  std::int32_t count = 0;
  requireSuccess(SLGetDeviceKeyListSize(&count));
  return static_cast<std::size_t>(count);
}

Call callOf(std::size_t (*search)(), std::size_t expected) {
  return [search, expected] {
    if (search() != expected) throw std::runtime_error("a search missed a head");
    return seconds(CLOCK_MONOTONIC);
  };
}

}  // namespace

const std::vector<SearchComparison>& searchComparisons() {
  static const std::vector<SearchComparison> table = {
      {"search, 3 networks", 10, {{Metric::medianLatency, 1.05}}},
  };
  return table;
}

Measurement measure(const SearchComparison& comparison, const Plan& plan) {
  pinTo(plan.clientCore);
  const Announcer announcer(comparison.heads);
  const std::size_t found = privateNetworks.size() * static_cast<std::size_t>(comparison.heads);
  Plan brief = plan;
  brief.rounds = std::min(plan.rounds, mostRounds);
  Measurement measurement = measurementOf(comparison);
  takeTurns({callOf(plan.againstItself ? minimalSearch : librarySearch, found), callOf(minimalSearch, found), 0, announcer.cpuClock()},
            brief, measurement);
  return measurement;
}

}  // namespace fringix::bench
