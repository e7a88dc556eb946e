// How long many calls of one kind took, in figures.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace fringix::tool {

// In milliseconds. 95 % of the samples are no larger than `p95`; fewer than 20 samples do not tell it, nor fewer than 100 the other.
struct Timing {
  std::size_t samples = 0;
  double least = 0;
  double mean = 0;
  double median = 0;
  std::optional<double> p95;
  std::optional<double> p99;
  double worst = 0;
};

// Of samples in ascending order; there is at least one.
Timing timingOf(std::span<const double> sorted);

// The smallest sample that `share` of all do not exceed.
double shareOf(std::span<const double> sorted, double share);

struct Bin {
  double from = 0;
  double to = 0;  // the next one's `from`
  std::size_t count = 0;
};

// Up to about so many bins of one round width, from the least sample to the 95th of 100, and the rest in a last one that ends with the
// worst, if there is a rest.
std::vector<Bin> binsOf(std::span<const double> sorted, std::size_t most);

}  // namespace fringix::tool
