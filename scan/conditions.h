// What the pictures themselves tell of the head, before points are made of them: how much they scatter, and what share of the white
// picture's light the steps have in the mean. The latter is the projector's gamma, so it is the same for all pixels, however blurred.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "decode.h"
#include "noise.h"
#include "strip.h"
#include "sums.h"

namespace fringix::scan {

struct Conditions {
  NoiseModel noise;
  double middle = 0;  // the mean of the steps between black (0) and white (1); 0: it cannot be told
};

// Of samples of the pixels, as histograms.
class ConditionSamples {
 public:
  void add(const DecodedStrip& decoded, const StripSums& sums, std::size_t count);  // the first `count` pixels of a strip

  // The noise is the one that was stated, unless the samples scatter more. `freedom` as Decoder tells it.
  Conditions conditions(const NoiseModel& stated, std::int32_t freedom) const;

 private:
  static constexpr std::size_t levelBins = 16;
  static constexpr std::size_t scatterBins = 512;
  static constexpr std::size_t middleBins = 256;

  std::array<std::array<std::uint32_t, scatterBins>, levelBins> scatter_{};  // by the pixels' mean level
  std::array<std::uint32_t, middleBins> middle_{};
};

}  // namespace fringix::scan
