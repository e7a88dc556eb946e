// What stands before a head, in the frame of camera 0.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "head/geometry/vector.h"
#include "head/scene/mesh.h"
#include "head/scene/surface_point.h"

namespace fringix::head {

struct Sphere {
  std::string name;
  Vector centre;
  double radius = 0;
  double albedo = 0;
};

// A rectangle from a corner along two edges that are square to each other, or the whole plane that it lies in.
struct Patch {
  std::string name;
  Vector corner;
  Vector along;
  Vector across;
  double albedo = 0;
  bool bounded = true;
  int squaresAlong = 0;  // a checkerboard whose every second square is dark; 0: plain
  int squaresAcross = 0;

  Vector normal() const { return unit(cross(along, across)); }
  std::array<Vector, 4> corners() const { return {corner, corner + along, corner + along + across, corner + across}; }
};

struct Distance {
  std::string name;
  std::array<std::string, 2> between;  // names of what it is measured between
  double value = 0;
};

struct Scene {
  std::vector<Sphere> spheres;
  std::vector<Patch> patches;
  std::vector<std::shared_ptr<const Mesh>> meshes;
  std::vector<Distance> distances;

  // The first surface that a ray meets; `direction` has length 1.
  std::optional<SurfacePoint> firstSurface(const Vector& origin, const Vector& direction) const;
};

// The same question for one sphere.
std::optional<SurfacePoint> meet(const Sphere& sphere, const Vector& origin, const Vector& direction);

}  // namespace fringix::head
