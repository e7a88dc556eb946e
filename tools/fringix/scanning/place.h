// Places and directions in space.
#pragma once

#include <array>
#include <cmath>

namespace fringix::tool {

using Place = std::array<double, 3>;

inline Place operator-(const Place& a, const Place& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Place operator+(const Place& a, const Place& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Place operator*(const Place& a, double scale) { return {a[0] * scale, a[1] * scale, a[2] * scale}; }
inline double dot(const Place& a, const Place& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline double length(const Place& a) { return std::sqrt(dot(a, a)); }
inline Place cross(const Place& a, const Place& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

}  // namespace fringix::tool
