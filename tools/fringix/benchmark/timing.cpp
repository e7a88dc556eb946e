#include "benchmark/timing.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "pictures/value_picture.h"

namespace fringix::tool {
namespace {

constexpr std::size_t enoughForP95 = 20;
constexpr std::size_t enoughForP99 = 100;

std::size_t countBelow(std::span<const double> sorted, double limit) {
  return static_cast<std::size_t>(std::lower_bound(sorted.begin(), sorted.end(), limit) - sorted.begin());
}

}  // namespace

double shareOf(std::span<const double> sorted, double share) {
  const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(sorted.size()) - 1e-9));
  return sorted[std::clamp<std::size_t>(rank, 1, sorted.size()) - 1];
}

Timing timingOf(std::span<const double> sorted) {
  Timing timing;
  timing.samples = sorted.size();
  timing.least = sorted.front();
  timing.mean = std::accumulate(sorted.begin(), sorted.end(), 0.0) / static_cast<double>(sorted.size());
  timing.median = shareOf(sorted, 0.5);
  if (sorted.size() >= enoughForP95) timing.p95 = shareOf(sorted, 0.95);
  if (sorted.size() >= enoughForP99) timing.p99 = shareOf(sorted, 0.99);
  timing.worst = sorted.back();
  return timing;
}

std::vector<Bin> binsOf(std::span<const double> sorted, std::size_t most) {
  const double high = shareOf(sorted, 0.95);
  if (sorted.front() == sorted.back()) return {{sorted.front(), sorted.back(), sorted.size()}};
  const double range = high > sorted.front() ? high - sorted.front() : sorted.back() - sorted.front();
  const double step = roundStep(range, static_cast<double>(most) - 1);
  const double first = std::floor(sorted.front() / step);
  const double last = std::floor(high / step);
  std::vector<Bin> bins;
  for (double i = first; i <= last; ++i) {
    const double from = i * step;
    const double to = (i + 1) * step;
    bins.push_back({from, to, countBelow(sorted, to) - countBelow(sorted, from)});
  }
  const std::size_t rest = sorted.size() - countBelow(sorted, bins.back().to);
  if (rest > 0) bins.push_back({bins.back().to, sorted.back(), rest});
  return bins;
}

}  // namespace fringix::tool
