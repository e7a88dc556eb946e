#include "conditions.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <vector>

namespace fringix::scan {

namespace {

constexpr float levelsPerBin = 16;
constexpr float binsPerLevel = 16;     // of the scatter
constexpr std::uint32_t fewest = 100;  // samples that a median needs
constexpr double tolerance = 1.2;      // what samples may scatter more than stated, as a ratio of variances
constexpr float leastModulation = 5;   // of a pixel that tells the middle, in grey levels
constexpr double middlesPerUnit = 64;  // the middle is told in steps, so that a part of the picture tells the same as all of it

// In bins.
double medianOf(std::span<const std::uint32_t> histogram) {
  const auto all = std::accumulate(histogram.begin(), histogram.end(), std::uint64_t{0});
  std::uint64_t below = 0;
  std::size_t bin = 0;
  while (2 * (below + histogram[bin]) < all) below += histogram[bin++];
  return static_cast<double>(bin) + (static_cast<double>(all) / 2 - static_cast<double>(below)) / std::max(histogram[bin], 1U);
}

std::uint32_t countOf(std::span<const std::uint32_t> histogram) { return std::accumulate(histogram.begin(), histogram.end(), 0U); }

struct Variance {
  double level;
  double value;
  double weight;
};

// A line through the variances, nowhere below what was stated.
NoiseModel fit(const std::vector<Variance>& variances, const NoiseModel& stated) {
  double weight = 0, level = 0, value = 0;
  for (const Variance& v : variances) weight += v.weight, level += v.weight * v.level, value += v.weight * v.value;
  level /= weight;
  value /= weight;
  if (value < tolerance * (stated.constant() + stated.variancePerLevel * level)) return stated;
  double squares = 0, products = 0;
  for (const Variance& v : variances) {
    squares += v.weight * (v.level - level) * (v.level - level);
    products += v.weight * (v.level - level) * (v.value - value);
  }
  const double steepest = (value - stated.constant()) / level;
  const double slope = squares > 0 ? products / squares : 0;
  const double perLevel = std::max(std::min(slope, steepest), stated.variancePerLevel);
  return {std::max(stated.floor, std::sqrt(std::max(value - perLevel * level - NoiseModel::rounding, 0.0))), perLevel};
}

}  // namespace

void ConditionSamples::add(const DecodedStrip& decoded, const StripSums& sums, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (decoded.reason[i] == static_cast<std::uint8_t>(Reason::saturation)) continue;
    const float scatter = std::sqrt(std::max(decoded.misfit[i], 0.0F)) * binsPerLevel;
    auto& histogram = scatter_[std::min(static_cast<std::size_t>(decoded.offset[i] / levelsPerBin), levelBins - 1)];
    ++histogram[std::min(static_cast<std::size_t>(scatter), scatterBins - 1)];
    if (sums.gray == nullptr || decoded.modulation[i] < leastModulation) continue;
    const auto black = static_cast<float>(sums.gray->black[i]);
    const float middle = (decoded.offset[i] - black) / (static_cast<float>(sums.levels.white[i]) - black);
    if (middle > 0 && middle < 1) ++middle_[static_cast<std::size_t>(middle * middleBins)];
  }
}

Conditions ConditionSamples::conditions(const NoiseModel& stated, std::int32_t freedom) const {
  Conditions conditions{stated};
  if (countOf(middle_) >= fewest) conditions.middle = std::round(medianOf(middle_) / middleBins * middlesPerUnit) / middlesPerUnit;
  std::vector<Variance> variances;
  for (std::size_t bin = 0; bin < levelBins && freedom > 0; ++bin) {
    const std::uint32_t count = countOf(scatter_[bin]);
    if (count < fewest) continue;
    const double deviation = medianOf(scatter_[bin]) / binsPerLevel / medianOfDeviation(freedom);
    variances.push_back({(static_cast<double>(bin) + 0.5) * levelsPerBin, deviation * deviation, static_cast<double>(count)});
  }
  if (!variances.empty()) conditions.noise = fit(variances, stated);
  return conditions;
}

}  // namespace fringix::scan
