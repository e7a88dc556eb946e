// A picture: 1 byte per pixel, rows from top to bottom without gaps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "head/settings/head_settings.h"

namespace fringix::head {

struct Picture {
  Size size;
  std::vector<std::uint8_t> pixels;

  void resize(Size to) {
    size = to;
    pixels.resize(static_cast<std::size_t>(to.width) * static_cast<std::size_t>(to.height));
  }

  std::uint8_t* row(std::int32_t y) { return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width); }
};

}  // namespace fringix::head
