#include "findings.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "noise.h"

namespace fringix::scan {

namespace {

constexpr std::size_t sampling = 4;    // every fourth pixel tells enough of the noise
constexpr double flickerLimit = 0.01;  // a share of the light
constexpr double movingShare = 0.002;  // of the pixels that are lit

}  // namespace

const char* nameOf(Reason reason) {
  constexpr std::array<const char*, reasonCount> names = {"none",     "saturation", "noise", "gray margin", "residual", "column",
                                                          "unsteady", "geometry",   "edge",  "outlier",     "component"};
  return names[static_cast<std::size_t>(reason)];
}

void Scatter::add(const DecodedStrip& decoded, std::size_t count) {
  for (std::size_t i = 0; i < count; i += sampling) {
    if (decoded.reason[i] != 0) continue;
    const float scatter = std::sqrt(std::max(decoded.misfit[i], 0.0F));
    ++histogram_[std::min(static_cast<std::size_t>(scatter * binsPerLevel), bins - 1)];
  }
}

void Scatter::add(const Scatter& other) {
  for (std::size_t i = 0; i < bins; ++i) histogram_[i] += other.histogram_[i];
}

double Scatter::median() const {
  const auto all = std::accumulate(histogram_.begin(), histogram_.end(), std::uint64_t{0});
  if (all == 0) return 0;
  std::uint64_t below = 0;
  std::size_t bin = 0;
  while (2 * (below + histogram_[bin]) < all) below += histogram_[bin++];
  const double inside = (static_cast<double>(all) / 2 - static_cast<double>(below)) / histogram_[bin];
  return (static_cast<double>(bin) + inside) / static_cast<double>(binsPerLevel);
}

void Counts::add(const std::uint8_t* reason, const float* sigma, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) ++pixels[reason[i]];
  for (std::size_t i = 0; i < count; ++i) sumOfVariances += reason[i] == 0 ? static_cast<double>(sigma[i] * sigma[i]) : 0;
}

void Counts::add(const Counts& other) {
  for (std::size_t i = 0; i < reasonCount; ++i) pixels[i] += other.pixels[i];
  sumOfVariances += other.sumOfVariances;
}

double flickerOf(std::uint64_t black, const std::vector<std::uint64_t>& steps) {
  const auto [least, most] = std::minmax_element(steps.begin(), steps.end());
  double mean = 0;
  for (const std::uint64_t step : steps) mean += static_cast<double>(step) / static_cast<double>(steps.size());
  const double light = mean - static_cast<double>(black);
  if (light <= 0) return 0;
  return std::max(static_cast<double>(*most) - mean, mean - static_cast<double>(*least)) / light;
}

Findings findingsOf(const Counts& counts, const Scatter& scatter, std::int32_t freedom, double flicker) {
  const auto with = [&](Reason reason) { return static_cast<double>(counts.pixels[static_cast<std::size_t>(reason)]); };
  Findings findings;
  findings.counts = counts.pixels;
  if (with(Reason::none) > 0) findings.expectedSigma = std::sqrt(counts.sumOfVariances / with(Reason::none));
  if (freedom > 0) findings.measuredNoise = scatter.median() / medianOfDeviation(freedom);
  findings.flicker = flicker;
  findings.flickers = findings.flicker > flickerLimit;
  const double disturbed = with(Reason::unsteady) + with(Reason::residual);
  findings.moves = disturbed > movingShare * (disturbed + with(Reason::none));
  return findings;
}

}  // namespace fringix::scan
