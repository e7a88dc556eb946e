#include "head/geometry/lens.h"

#include <algorithm>
#include <cmath>

namespace fringix::head {

Slope Lens::distort(const Slope& slope) const {
  const auto& [k1, k2, p1, p2, k3] = distortion;
  const auto& [x, y] = slope;
  const double square = x * x + y * y;
  const double radial = 1 + square * (k1 + square * (k2 + square * k3));
  return {x * radial + 2 * p1 * x * y + p2 * (square + 2 * x * x), y * radial + p1 * (square + 2 * y * y) + 2 * p2 * x * y};
}

// A fixed-point iteration; each round divides the error by the inverse of the distortion's slope, some tens here.
Slope Lens::undistort(const Slope& distorted) const {
  constexpr int mostRounds = 100;
  constexpr double close = 1e-15;
  Slope slope = distorted;
  for (int round = 0; round < mostRounds; ++round) {
    const Slope there = distort(slope);
    const Slope error{distorted.x - there.x, distorted.y - there.y};
    slope = {slope.x + error.x, slope.y + error.y};
    if (std::max(std::abs(error.x), std::abs(error.y)) < close) break;
  }
  return slope;
}

ImagePoint Lens::imageOf(const Slope& slope) const {
  const Slope bent = distort(slope);
  return {fx * bent.x + cx, fy * bent.y + cy};
}

Slope Lens::slopeThrough(const ImagePoint& place) const { return undistort({(place.x - cx) / fx, (place.y - cy) / fy}); }

}  // namespace fringix::head
