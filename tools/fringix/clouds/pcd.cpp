#include "clouds/pcd.h"

#include <fmt/format.h>

#include <limits>

namespace fringix::tool {
namespace {

constexpr std::size_t pointSize = 32;

std::string headerOf(const PointGrid& grid) {
  return fmt::format(
      "# .PCD v0.7 - Point Cloud Data file format\n"
      "VERSION 0.7\n"
      "FIELDS x y z normal_x normal_y normal_z intensity quality\n"
      "SIZE 4 4 4 4 4 4 4 4\n"
      "TYPE F F F F F F F F\n"
      "COUNT 1 1 1 1 1 1 1 1\n"
      "WIDTH {}\n"
      "HEIGHT {}\n"
      "VIEWPOINT 0 0 0 1 0 0 0\n"
      "POINTS {}\n"
      "DATA binary\n",
      grid.width, grid.height, grid.pixels());
}

}  // namespace

Bytes makePcd(const PointGrid& grid) {
  requireWhole(grid);
  const std::string header = headerOf(grid);
  Bytes file;
  file.reserve(header.size() + grid.pixels() * pointSize);
  append(file, header);
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) append(file, grid.points[3 * i + axis]);
    for (std::size_t axis = 0; axis < 3; ++axis) append(file, grid.normals[3 * i + axis]);
    append(file, static_cast<float>(grid.intensity[i]));
    append(file, grid.hasPoint(i) ? grid.sigma[i] : std::numeric_limits<float>::quiet_NaN());
  }
  return file;
}

}  // namespace fringix::tool
