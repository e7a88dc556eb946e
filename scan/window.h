// A part of a camera's picture.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fringix::scan {

struct Window {
  std::int32_t x = 0;  // of its first column
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;

  std::size_t pixels() const noexcept { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
  bool liesWithin(std::int32_t pictureWidth, std::int32_t pictureHeight) const noexcept {
    return x >= 0 && y >= 0 && width >= 1 && height >= 1 && x < pictureWidth && y < pictureHeight && width <= pictureWidth - x &&
           height <= pictureHeight - y;
  }
};

}  // namespace fringix::scan
