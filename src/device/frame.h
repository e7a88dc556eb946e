// Sizes and regions of camera frames, in pixels, wide enough that no product of what a head may state wraps.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fringix {

static_assert(sizeof(std::size_t) == 8, "frame sizes are products of two 32-bit numbers");

struct FrameSize {
  std::size_t width;
  std::size_t height;
  std::size_t pixels() const noexcept { return width * height; }
};

struct Region {
  std::uint32_t x;
  std::uint32_t y;
  std::uint32_t width;
  std::uint32_t height;
  std::size_t pixels() const noexcept { return std::size_t{width} * height; }
};

}  // namespace fringix
