// What noise the camera's pixels have: a variance that may grow with the level.
#pragma once

#include <cmath>
#include <cstdint>

namespace fringix::scan {

struct NoiseModel {
  double floor = 1;             // standard deviation in the dark, in grey levels
  double variancePerLevel = 0;  // what each grey level adds to the variance: 1 / (electrons per level)

  static constexpr double rounding = 1.0 / 12;  // variance of a level's rounding to 8 bits

  // The variance at a level is constant() + variancePerLevel * level.
  double constant() const { return floor * floor + rounding; }
};

// The median of a standard deviation from samples with so many degrees of freedom, in proportion to the true one.
inline double medianOfDeviation(std::int32_t freedom) { return std::pow(1 - 2.0 / (9.0 * freedom), 1.5); }

}  // namespace fringix::scan
