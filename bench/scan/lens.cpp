#include "lens.h"

namespace fringix::bench {

Place distorted(const double (&lens)[5], Place place) {
  const auto [x, y] = place;
  const double square = x * x + y * y;
  const double radial = 1 + square * (lens[0] + square * (lens[1] + square * lens[4]));
  return {x * radial + 2 * lens[2] * x * y + lens[3] * (square + 2 * x * x),
          y * radial + lens[2] * (square + 2 * y * y) + 2 * lens[3] * x * y};
}

// Each round leaves some per cent of the error.
Place undistorted(const double (&lens)[5], Place shown) {
  Place place = shown;
  for (int round = 0; round < 10; ++round) {
    const Place reached = distorted(lens, place);
    place = {place.x + shown.x - reached.x, place.y + shown.y - reached.y};
  }
  return place;
}

}  // namespace fringix::bench
