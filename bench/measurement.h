// Runs a comparison: both clients against one server, in turns, so that what disturbs the machine disturbs both alike.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "comparisons.h"
#include "metric.h"

namespace fringix::bench {

struct Plan {
  std::size_t clientCore = 0;
  std::size_t serverCore = 0;  // for comparisons on two cores
  std::size_t rounds = 41;     // a batch of each client per round
  double batchSeconds = 0.04;
  bool againstItself = false;  // a second minimal client stands in for the library: shows how much the method itself scatters
};

struct Measurement {
  const Comparison* comparison;
  std::vector<Batch> library;
  std::vector<Batch> byHand;
};

// Throws when a call fails or the two clients do not get the same bytes.
Measurement measure(const Comparison& comparison, const Plan& plan);

}  // namespace fringix::bench
