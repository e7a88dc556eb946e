#include "head/optics/scene.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace fringix::head {

namespace {

using Hit = std::optional<SurfacePoint>;

constexpr Vector focus{0, 0, 600};  // where all optics look
constexpr double nearest = 1e-6;    // a ray does not meet the surface that it starts from

constexpr Vector wallPoint{0, 0, 640};
constexpr Vector wallTilt{0.15, 0, -1};  // the wall is z = 640 + 0.15 x
constexpr double wallAlbedo = 0.85;

constexpr Vector ballCentre{80, 10, 600};
constexpr double ballRadius = 70;
constexpr double ballAlbedo = 0.75;

constexpr Vector stepLow{-150, -90, 585};
constexpr Vector stepHigh{-50, 90, 700};
constexpr double stepAlbedo = 0.65;

SurfacePoint surfaceAt(double distance, const Vector& origin, const Vector& direction, const Vector& normal, double albedo) {
  return {distance, origin + direction * distance, dot(normal, direction) > 0 ? normal * -1 : normal, albedo};
}

Hit wallHit(const Vector& origin, const Vector& direction) {
  const double approach = dot(wallTilt, direction);
  if (approach == 0) return std::nullopt;
  const double distance = dot(wallTilt, wallPoint - origin) / approach;
  if (distance < nearest) return std::nullopt;
  return surfaceAt(distance, origin, direction, unit(wallTilt), wallAlbedo);
}

Hit ballHit(const Vector& origin, const Vector& direction) {
  const Vector offset = origin - ballCentre;
  const double half = dot(offset, direction);
  const double discriminant = half * half - dot(offset, offset) + ballRadius * ballRadius;
  if (discriminant < 0) return std::nullopt;
  const double distance = -half - std::sqrt(discriminant);
  if (distance < nearest) return std::nullopt;
  const Vector point = origin + direction * distance;
  return surfaceAt(distance, origin, direction, unit(point - ballCentre), ballAlbedo);
}

// Where a ray is between the two faces of the step that are square to one axis.
struct Slab {
  double enter;
  double leave;
  Vector normal;
};

Slab slab(double low, double high, double origin, double direction, const Vector& axis) {
  const double first = (low - origin) / direction;
  const double second = (high - origin) / direction;
  return {std::min(first, second), std::max(first, second), axis};
}

Hit stepHit(const Vector& origin, const Vector& direction) {
  const std::array<Slab, 3> slabs{slab(stepLow.x, stepHigh.x, origin.x, direction.x, {1, 0, 0}),
                                  slab(stepLow.y, stepHigh.y, origin.y, direction.y, {0, 1, 0}),
                                  slab(stepLow.z, stepHigh.z, origin.z, direction.z, {0, 0, 1})};
  const Slab& last = *std::max_element(slabs.begin(), slabs.end(), [](const Slab& a, const Slab& b) { return a.enter < b.enter; });
  const double leave = std::min({slabs[0].leave, slabs[1].leave, slabs[2].leave});
  if (!(last.enter <= leave) || last.enter < nearest) return std::nullopt;
  return surfaceAt(last.enter, origin, direction, last.normal, stepAlbedo);
}

}  // namespace

std::optional<SurfacePoint> firstSurface(const Vector& origin, const Vector& direction) {
  Hit first;
  for (const Hit& hit : {wallHit(origin, direction), ballHit(origin, direction), stepHit(origin, direction)}) {
    if (hit && (!first || hit->distance < first->distance)) first = hit;
  }
  return first;
}

Pinhole projectorOptics(Size projector) { return {projector, 1.2 * projector.width, {0, 0, 0}, focus}; }

Pinhole cameraOptics(Size camera, std::uint32_t channel) {
  const double side = channel == 0 ? -160 : 160;
  return {camera, 1.4 * camera.width, {side, 0, 0}, focus};
}

}  // namespace fringix::head
