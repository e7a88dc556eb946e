#include "head/scene/scene.h"

#include <cmath>
#include <numbers>

namespace fringix::head {

namespace {

using Hit = std::optional<SurfacePoint>;

constexpr double darkSquare = 0.2;  // of the albedo of a bright one
constexpr double edgeBlur = 0.3;    // mm, standard deviation, of the edges between squares: print and lens make none sharper

// The share of an edge at which a point lies: 0 at the corner, 1 at the edge's end.
double shareOf(const Vector& edge, const Vector& offset) { return dot(edge, offset) / dot(edge, edge); }

// 1 in every second strip of `squares` along an edge of the patch, -1 in the others, and what is between at their borders.
double stripeAt(double share, int squares, double side) {
  const double place = share * squares;
  const double toBorder = (place - std::round(place)) * side / squares;
  const double sign = std::fmod(std::abs(std::round(place)), 2) == 0 ? 1 : -1;
  const bool outermost = std::round(place) == 0 || std::round(place) == squares;
  return sign * (outermost ? std::copysign(1.0, toBorder) : std::erf(toBorder / (edgeBlur * std::numbers::sqrt2)));
}

double albedoAt(const Patch& patch, double along, double across) {
  if (patch.squaresAlong == 0) return patch.albedo;
  const double bright =
      stripeAt(along, patch.squaresAlong, length(patch.along)) * stripeAt(across, patch.squaresAcross, length(patch.across));
  return patch.albedo * (darkSquare + (1 - darkSquare) * (1 + bright) / 2);
}

Hit meet(const Patch& patch, const Vector& origin, const Vector& direction) {
  const Vector normal = cross(patch.along, patch.across);
  const double approach = dot(normal, direction);
  if (approach == 0) return std::nullopt;
  const double distance = dot(normal, patch.corner - origin) / approach;
  if (!(distance >= nearestSurface)) return std::nullopt;
  const Vector offset = origin + direction * distance - patch.corner;
  const double along = shareOf(patch.along, offset);
  const double across = shareOf(patch.across, offset);
  if (patch.bounded && !(along >= 0 && along <= 1 && across >= 0 && across <= 1)) return std::nullopt;
  return surfaceAt(distance, origin, direction, unit(normal), albedoAt(patch, along, across));
}

}  // namespace

Hit meet(const Sphere& sphere, const Vector& origin, const Vector& direction) {
  const Vector offset = origin - sphere.centre;
  const double half = dot(offset, direction);
  const double discriminant = half * half - dot(offset, offset) + sphere.radius * sphere.radius;
  if (!(discriminant >= 0)) return std::nullopt;
  const double distance = -half - std::sqrt(discriminant);
  if (distance < nearestSurface) return std::nullopt;
  return surfaceAt(distance, origin, direction, unit(origin + direction * distance - sphere.centre), sphere.albedo);
}

Hit Scene::firstSurface(const Vector& origin, const Vector& direction) const {
  Hit first;
  const auto keepNearer = [&first](const Hit& hit) {
    if (hit && (!first || hit->distance < first->distance)) first = hit;
  };
  for (const Sphere& sphere : spheres) keepNearer(meet(sphere, origin, direction));
  for (const Patch& patch : patches) keepNearer(meet(patch, origin, direction));
  for (const auto& mesh : meshes) keepNearer(mesh->firstSurface(origin, direction));
  return first;
}

}  // namespace fringix::head
