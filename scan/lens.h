// A lens: how it bends what a pinhole would show. Places are in the normalised picture, at distance 1 before the pinhole.
#pragma once

#include <array>

namespace fringix::scan {

struct Place {
  double x;
  double y;
};

struct Distortion {
  double k1 = 0;
  double k2 = 0;
  double p1 = 0;
  double p2 = 0;
  double k3 = 0;
};

// What distort does to a small step from a place.
struct Jacobian {
  double xx;
  double xy;  // of x by y, and of y by x: they are the same
  double yy;

  double determinant() const { return xx * yy - xy * xy; }
};

Place distort(const Distortion& lens, Place place);
Jacobian jacobian(const Distortion& lens, Place place);

// The place that is shown at `shown`, by Newton's method from `start`, or from `shown` itself where that leads astray.
Place undistort(const Distortion& lens, Place shown, Place start);

}  // namespace fringix::scan
