#include "clouds/npy.h"

#include <fmt/format.h>

namespace fringix::tool {
namespace {

// Blanks and a line end fill it up, so that the numbers begin at a multiple of 64.
std::string headerOf(const PointGrid& grid) {
  constexpr std::size_t magicSize = 10;
  constexpr std::size_t alignment = 64;
  std::string header = fmt::format("{{'descr': '<f4', 'fortran_order': False, 'shape': ({}, {}, 3), }}", grid.height, grid.width);
  while ((magicSize + header.size() + 1) % alignment != 0) header += ' ';
  return header + "\n";
}

}  // namespace

Bytes makeRangeArray(const PointGrid& grid) {
  requireWhole(grid);
  const std::string header = headerOf(grid);
  Bytes file;
  file.reserve(128 + grid.points.size() * sizeof(float));
  append(file, "\x93NUMPY\x01");
  file.push_back(0);
  file.push_back(static_cast<std::uint8_t>(header.size() & 0xFF));
  file.push_back(static_cast<std::uint8_t>(header.size() >> 8));
  append(file, header);
  for (const float number : grid.points) append(file, number);
  return file;
}

}  // namespace fringix::tool
