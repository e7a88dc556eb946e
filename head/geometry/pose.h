// Where something stands and how it is turned.
#pragma once

#include "head/geometry/vector.h"

namespace fringix::head {

// The rows of a rotation matrix.
struct Rotation {
  Vector x{1, 0, 0};
  Vector y{0, 1, 0};
  Vector z{0, 0, 1};
};

inline Vector operator*(const Rotation& r, const Vector& v) { return {dot(r.x, v), dot(r.y, v), dot(r.z, v)}; }

inline Rotation inverse(const Rotation& r) { return {{r.x.x, r.y.x, r.z.x}, {r.x.y, r.y.y, r.z.y}, {r.x.z, r.y.z, r.z.z}}; }

inline Rotation operator*(const Rotation& a, const Rotation& b) {
  const Rotation columns = inverse(b);
  return inverse(Rotation{a * columns.x, a * columns.y, a * columns.z});
}

inline double radians(double degrees) { return degrees * 0.017453292519943295; }

// By an angle in degrees.
inline Rotation turnAboutX(double angle) {
  const double c = std::cos(radians(angle));
  const double s = std::sin(radians(angle));
  return {{1, 0, 0}, {0, c, -s}, {0, s, c}};
}

inline Rotation turnAboutY(double angle) {
  const double c = std::cos(radians(angle));
  const double s = std::sin(radians(angle));
  return {{c, 0, s}, {0, 1, 0}, {-s, 0, c}};
}

inline Rotation turnAboutZ(double angle) {
  const double c = std::cos(radians(angle));
  const double s = std::sin(radians(angle));
  return {{c, -s, 0}, {s, c, 0}, {0, 0, 1}};
}

// Takes points of one frame into another one.
struct Pose {
  Rotation rotation;
  Vector translation;

  Vector operator()(const Vector& point) const { return rotation * point + translation; }
};

inline Pose inverse(const Pose& pose) {
  const Rotation back = inverse(pose.rotation);
  return {back, back * pose.translation * -1};
}

// First `second`, then `first`.
inline Pose operator*(const Pose& first, const Pose& second) { return {first.rotation * second.rotation, first(second.translation)}; }

}  // namespace fringix::head
