// What stands in front of the head: a slanted wall with a step and a ball before it, and where projector and cameras are.
#pragma once

#include <cstdint>
#include <optional>

#include "head/optics/geometry.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

struct SurfacePoint {
  double distance = 0;  // along the ray
  Vector point;
  Vector normal;      // of length 1, towards the side that the ray came from
  double albedo = 0;  // the share of the light that the surface gives back
};

// The first surface that a ray meets; `direction` has length 1.
std::optional<SurfacePoint> firstSurface(const Vector& origin, const Vector& direction);

inline constexpr std::uint32_t channelCount = 2;  // cameras of a head

Pinhole projectorOptics(Size projector);
Pinhole cameraOptics(Size camera, std::uint32_t channel);

}  // namespace fringix::head
