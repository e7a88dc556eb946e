// The bending of rays by a lens: the usual five coefficients.
#pragma once

#include <array>
#include <optional>

namespace fringix::head {

// A place in an image, in pixels: 0, 0 is the centre of the first pixel.
struct ImagePoint {
  double x = 0;
  double y = 0;
};

// The direction of a ray: where it meets the plane z = 1 of the device.
struct Slope {
  double x = 0;
  double y = 0;
};

// A pinhole with distortion: a ray leaves the pinhole by the slope x, y and meets the image at u = fx x_d + cx, v = fy y_d + cy.
struct Lens {
  double fx = 1;
  double fy = 1;
  double cx = 0;
  double cy = 0;
  std::array<double, 5> distortion{};  // k1, k2, p1, p2, k3

  Slope distort(const Slope& slope) const;
  Slope undistort(const Slope& distorted) const;  // to the last digits, for what a picture of this lens can show

  ImagePoint imageOf(const Slope& slope) const;
  Slope slopeThrough(const ImagePoint& place) const;
};

}  // namespace fringix::head
