// Vectors and turns in three dimensions.
#pragma once

#include <array>
#include <cstddef>

namespace fringix::scan {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;  // rows

inline constexpr Matrix identity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

inline double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline Vector operator+(const Vector& a, const Vector& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vector operator*(double factor, const Vector& v) { return {factor * v[0], factor * v[1], factor * v[2]}; }
inline Vector operator*(const Matrix& m, const Vector& v) { return {dot(m[0], v), dot(m[1], v), dot(m[2], v)}; }

inline Matrix transposed(const Matrix& m) {
  return {{{m[0][0], m[1][0], m[2][0]}, {m[0][1], m[1][1], m[2][1]}, {m[0][2], m[1][2], m[2][2]}}};
}

inline Matrix operator*(const Matrix& a, const Matrix& b) {
  const Matrix columns = transposed(b);
  Matrix product{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) product[row][column] = dot(a[row], columns[column]);
  }
  return product;
}

inline double determinant(const Matrix& m) { return dot(m[0], cross(m[1], m[2])); }

}  // namespace fringix::scan
