#include "head/optics/regions.h"

#include <algorithm>

namespace fringix::head {

namespace {

const std::uint8_t* pixelAt(const Picture& picture, std::uint32_t x, std::uint32_t y) {
  return picture.pixels.data() + std::size_t{y} * static_cast<std::size_t>(picture.size.width) + x;
}

std::uint8_t cellMean(const Picture& picture, std::uint32_t left, std::uint32_t top, std::uint32_t side) {
  std::uint64_t sum = 0;
  for (std::uint32_t y = top; y < top + side; ++y) {
    const std::uint8_t* row = pixelAt(picture, left, y);
    for (std::uint32_t x = 0; x < side; ++x) sum += row[x];
  }
  const std::uint64_t count = std::uint64_t{side} * side;
  return static_cast<std::uint8_t>((sum + count / 2) / count);
}

Size sizeOf(std::uint32_t width, std::uint32_t height) { return {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)}; }

}  // namespace

bool liesWithin(const Region& region, Size size) {
  return std::int64_t{region.x} + region.width <= size.width && std::int64_t{region.y} + region.height <= size.height;
}

void crop(const Picture& picture, const Region& region, Picture& part) {
  part.resize(sizeOf(region.width, region.height));
  for (std::uint32_t y = 0; y < region.height; ++y) {
    const std::uint8_t* row = pixelAt(picture, region.x, region.y + y);
    std::copy(row, row + region.width, part.row(static_cast<std::int32_t>(y)));
  }
}

void reduce(const Picture& picture, const Region& region, std::uint32_t factor, Picture& reduced) {
  reduced.resize(sizeOf(region.width / factor, region.height / factor));
  for (std::uint32_t y = 0; y < region.height / factor; ++y) {
    std::uint8_t* row = reduced.row(static_cast<std::int32_t>(y));
    for (std::uint32_t x = 0; x < region.width / factor; ++x)
      row[x] = cellMean(picture, region.x + x * factor, region.y + y * factor, factor);
  }
}

}  // namespace fringix::head
