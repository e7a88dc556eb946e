// Spheres and planes through points: those with the least sum of squared distances.
#pragma once

#include <span>

#include "scanning/place.h"

namespace fringix::tool {

struct FittedSphere {
  Place centre{};
  double radius = 0;

  double deviation(const Place& place) const { return length(place - centre) - radius; }  // above 0 outside
};

struct FittedPlane {
  Place normal{};  // of length 1, away from the origin
  double distance = 0;

  double deviation(const Place& place) const { return dot(normal, place) - distance; }  // above 0 behind it
};

// All throw std::runtime_error with the reason when the points determine none: too few, all on a line, for a sphere all in a plane.
FittedSphere fitSphere(std::span<const Place> points);
FittedSphere fitSphereOfRadius(std::span<const Place> points, double radius);
FittedPlane fitPlane(std::span<const Place> points);

}  // namespace fringix::tool
