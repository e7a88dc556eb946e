// Where a ray meets a surface.
#pragma once

#include "head/geometry/vector.h"

namespace fringix::head {

struct SurfacePoint {
  double distance = 0;  // along the ray
  Vector point;
  Vector normal;      // of length 1, towards the side that the ray came from
  double albedo = 0;  // the share of the light that the surface gives back
};

inline constexpr double nearestSurface = 1e-6;  // a ray does not meet the surface that it starts from

inline SurfacePoint surfaceAt(double distance, const Vector& origin, const Vector& direction, const Vector& normal, double albedo) {
  return {distance, origin + direction * distance, dot(normal, direction) > 0 ? normal * -1 : normal, albedo};
}

}  // namespace fringix::head
