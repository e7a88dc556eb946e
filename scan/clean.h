// Takes points away that are none of a surface: at depth steps, where a pixel sees two surfaces at once; those that stand out of their
// neighbours; and patches of few points.
#pragma once

#include <cstddef>
#include <cstdint>

#include "geometry.h"

namespace fringix::scan {

struct CleanLimits {
  bool on = true;
  double edgeAngle = 80;         // steepest surface that is none of a depth step, between normal and ray, in degrees; 90: no limit
  double outlier = 6;            // largest distance from the middle between opposite neighbours, in standard deviations; 0: no limit
  std::int32_t leastPatch = 50;  // points of the smallest patch that stays; 0: no limit
};

void check(const CleanLimits& limits);  // throws Failure

// An organised cloud as one camera saw it.
struct Surface {
  float* points;
  float* sigma;
  std::uint8_t* reason;
  std::size_t width;
  std::size_t height;
  Vector pinhole;
  double spacing;  // of neighbouring rays at distance 1
};

// What is taken away becomes not a number and gets its reason.
void clean(const Surface& surface, const CleanLimits& limits, std::size_t threads);

}  // namespace fringix::scan
