// Points in the order of a camera's pixels, as the writers of this room take them.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace fringix::tool {

// Borrowed; an entry for each pixel, rows from top to bottom. A pixel without a point has coordinates that are no numbers.
struct PointGrid {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::span<const float> points;   // x, y, z
  std::span<const float> normals;  // x, y, z; no numbers where there is none
  std::span<const float> sigma;    // expected standard deviation, in the unit of the points
  std::span<const std::uint8_t> intensity;

  std::size_t pixels() const { return std::size_t{width} * height; }
  bool hasPoint(std::size_t pixel) const { return std::isfinite(points[3 * pixel]); }
};

// Throws std::invalid_argument unless there is an entry for each pixel.
void requireWhole(const PointGrid& grid);

}  // namespace fringix::tool
