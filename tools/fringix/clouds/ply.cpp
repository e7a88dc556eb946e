#include "clouds/ply.h"

#include <fmt/format.h>

namespace fringix::tool {
namespace {

constexpr std::size_t pointSize = 35;

std::size_t countPoints(const PointGrid& grid) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < grid.pixels(); ++i) count += grid.hasPoint(i) ? 1U : 0U;
  return count;
}

std::string headerOf(std::size_t count, std::span<const std::string> comments) {
  std::string header = "ply\nformat binary_little_endian 1.0\n";
  for (const std::string& comment : comments) header += "comment " + comment + "\n";
  header += fmt::format("element vertex {}\n", count);
  for (const char* name : {"x", "y", "z", "nx", "ny", "nz"}) header += fmt::format("property float {}\n", name);
  for (const char* name : {"red", "green", "blue"}) header += fmt::format("property uchar {}\n", name);
  for (const char* name : {"intensity", "quality"}) header += fmt::format("property float {}\n", name);
  return header + "end_header\n";
}

void appendPoint(Bytes& file, const PointGrid& grid, std::size_t pixel) {
  for (std::size_t axis = 0; axis < 3; ++axis) append(file, grid.points[3 * pixel + axis]);
  const bool hasNormal = std::isfinite(grid.normals[3 * pixel]);
  for (std::size_t axis = 0; axis < 3; ++axis) append(file, hasNormal ? grid.normals[3 * pixel + axis] : 0.0F);
  file.insert(file.end(), 3, grid.intensity[pixel]);
  append(file, static_cast<float>(grid.intensity[pixel]));
  append(file, grid.sigma[pixel]);
}

}  // namespace

Bytes makePly(const PointGrid& grid, std::span<const std::string> comments) {
  requireWhole(grid);
  const std::size_t count = countPoints(grid);
  const std::string header = headerOf(count, comments);
  Bytes file;
  file.reserve(header.size() + count * pointSize);
  append(file, header);
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (grid.hasPoint(i)) appendPoint(file, grid, i);
  }
  return file;
}

}  // namespace fringix::tool
