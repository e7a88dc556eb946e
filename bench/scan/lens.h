// What a lens does to normalised coordinates: k1, k2, p1, p2, k3.
#pragma once

namespace fringix::bench {

struct Place {
  double x;
  double y;
};

Place distorted(const double (&lens)[5], Place place);
Place undistorted(const double (&lens)[5], Place shown);

}  // namespace fringix::bench
