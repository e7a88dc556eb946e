// What is told of a scan beside its points.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "decode.h"
#include "strip.h"

namespace fringix::scan {

const char* nameOf(Reason reason);

struct Findings {
  std::array<std::uint64_t, reasonCount> counts{};  // pixels by Reason; those without one are the points
  double expectedSigma = 0;                         // root of the mean square of the points' sigma, in mm
  double measuredNoise = 0;                         // of the levels, from the scatter of the steps; 0 when there are too few steps
  double flicker = 0;                               // largest deviation of the light in a step from the mean of all, as a share
  bool flickers = false;
  bool moves = false;
};

// How much the steps of pixels that give a point scatter about their cosine, as a histogram.
class Scatter {
 public:
  void add(const DecodedStrip& decoded, std::size_t count);  // the first `count` pixels of a strip
  void add(const Scatter& other);
  double median() const;  // in grey levels

 private:
  static constexpr std::size_t bins = 1024;
  static constexpr float binsPerLevel = 32;

  std::array<std::uint32_t, bins> histogram_{};
};

// Pixels by reason, and the variance of the points among them.
struct Counts {
  std::array<std::uint64_t, reasonCount> pixels{};
  double sumOfVariances = 0;

  void add(const std::uint8_t* reason, const float* sigma, std::size_t count);
  void add(const Counts& other);
};

// From the totals of the levels of the black picture and of the finest frequency's steps.
double flickerOf(std::uint64_t black, const std::vector<std::uint64_t>& steps);

// `freedom` tells how many levels of a pixel its cosine did not need.
Findings findingsOf(const Counts& counts, const Scatter& scatter, std::int32_t freedom, double flicker);

}  // namespace fringix::scan
