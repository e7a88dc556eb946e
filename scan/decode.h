// From the sums of a strip to projector coordinates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "noise.h"
#include "plan.h"
#include "strip.h"
#include "sums.h"

namespace fringix::scan {

struct DecodeLimits {
  NoiseModel noise;
  std::int32_t saturation = 254;  // levels from here on count as saturated
  double periodShare = 0.02;      // largest expected standard deviation of the phase, in turns
  double grayMargin = 4;          // in standard deviations of the noise
  double residual = 0.45;         // largest distance of the phase from the period that was counted, in turns
  double unsteadiness = 0.05;     // largest misfit of the steps, in proportion to the modulation, beyond noise
};

struct DecodedStrip {
  Strip<float> column;      // of the projector: 0 is the centre of the first
  Strip<float> variance;    // of the column
  Strip<float> modulation;  // amplitude of the cosine in grey levels
  Strip<float> offset;      // its mean level
  Strip<float> misfit;      // variance of the steps about their cosine, in grey levels; 0 where there are too few steps
  Strip<std::uint8_t> reason;
};

struct Conditions;

class Decoder {
 public:
  Decoder(const Plan& plan, const DecodeLimits& limits);  // throws Failure

  Decoder under(const Conditions& conditions) const;  // the same, with what the pictures have told

  void decode(const StripSums& sums, DecodedStrip& decoded) const;

  std::int32_t freedom() const noexcept { return freedom_; }  // levels beyond what a cosine of each frequency needs, and its harmonic

 private:
  void fit(const StripSums& sums, DecodedStrip& decoded) const;
  void countByGrayCode(const GraySums& sums, const Strip<float>& turn, DecodedStrip& decoded) const;
  void countByFrequencies(const FrequencySums* frequencies, const Strip<float>& turn, DecodedStrip& decoded) const;
  void judge(const LevelSums& sums, DecodedStrip& decoded) const;
  void compareWithWhite(const LevelSums& levels, const GraySums& gray, DecodedStrip& decoded) const;

  std::vector<Frequency> frequencies_;
  std::int32_t grayBits_;
  std::int32_t steps_;
  std::int32_t width_;
  std::int32_t freedom_;
  double middle_ = 0;  // as Conditions have it
  DecodeLimits limits_;
};

}  // namespace fringix::scan
