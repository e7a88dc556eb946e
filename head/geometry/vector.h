// Points and directions in space, in millimetres; x to the right, y down, z away from the head.
#pragma once

#include <cmath>

namespace fringix::head {

struct Vector {
  double x = 0;
  double y = 0;
  double z = 0;
};

inline Vector operator+(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vector operator*(const Vector& a, double factor) { return {a.x * factor, a.y * factor, a.z * factor}; }
inline double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector cross(const Vector& a, const Vector& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
inline double length(const Vector& a) { return std::sqrt(dot(a, a)); }
inline Vector unit(const Vector& a) { return a * (1 / length(a)); }

}  // namespace fringix::head
