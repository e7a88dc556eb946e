#include "head/geometry/optics.h"

#include <algorithm>

namespace fringix::head {

namespace {

double squareOf(const Slope& slope) { return slope.x * slope.x + slope.y * slope.y; }

double widestSlope(Size size, const Lens& lens) {
  constexpr double reserve = 1.1;
  double widest = 0;
  for (const double x : {-0.5, size.width - 0.5}) {
    for (const double y : {-0.5, size.height - 0.5}) widest = std::max(widest, squareOf(lens.slopeThrough({x, y})));
  }
  return widest * reserve;
}

}  // namespace

Optics::Optics(Size size, const Lens& lens, const Pose& pose)
    : size_(size),
      lens_(lens),
      pose_(pose),
      back_(inverse(pose.rotation)),
      position_(inverse(pose).translation),
      widest_(widestSlope(size, lens)) {}

Vector Optics::directionThrough(const ImagePoint& place) const {
  const Slope slope = lens_.slopeThrough(place);
  return unit(back_ * Vector{slope.x, slope.y, 1});
}

double Optics::depth(const Vector& point) const { return pose_(point).z; }

std::optional<ImagePoint> Optics::project(const Vector& point) const {
  const Vector seen = pose_(point);
  if (seen.z <= 0) return std::nullopt;
  const Slope slope{seen.x / seen.z, seen.y / seen.z};
  if (squareOf(slope) > widest_) return std::nullopt;
  const ImagePoint place = lens_.imageOf(slope);
  return isInside(place) ? std::optional(place) : std::nullopt;
}

bool Optics::isInside(const ImagePoint& place) const {
  return place.x >= -0.5 && place.y >= -0.5 && place.x < size_.width - 0.5 && place.y < size_.height - 0.5;
}

}  // namespace fringix::head
