// Measures two sides in turns, so that what disturbs the machine disturbs both alike.
#pragma once

#include <time.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "metric.h"

namespace fringix::bench {

struct Plan {
  std::size_t clientCore = 0;
  std::size_t serverCore = 0;  // for comparisons on two cores
  std::size_t rounds = 41;     // a batch of each client per round
  double batchSeconds = 0.04;
  bool againstItself = false;  // a second minimal client stands in for the library: shows how much the method itself scatters
};

// A quantity to show, and how large the library's may be in proportion to the other side's; for one of which more is better, how
// small. Or how much more it may be.
struct Quantity {
  Metric metric;
  std::optional<double> bound;
  std::optional<double> mostMore = std::nullopt;
};

// What is measured: does one thing and gives the time at which it was done, in seconds of CLOCK_MONOTONIC.
using Call = std::function<double()>;

struct Sides {
  Call library;
  Call byHand;
  std::size_t bytesPerCall;
  clockid_t serverClock;
};

struct Measurement {
  std::string name;
  std::vector<Quantity> quantities;
  std::vector<Batch> library;
  std::vector<Batch> byHand;
};

// Of a row of one of the tables of what is compared, by its name and quantities.
template <class Row>
Measurement measurementOf(const Row& row) {
  return {row.name, row.quantities, {}, {}};
}

// Adds the plan's rounds to a measurement.
void takeTurns(const Sides& sides, const Plan& plan, Measurement& measurement);

}  // namespace fringix::bench
