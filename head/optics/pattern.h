// An image for the projector.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "head/settings/head_settings.h"

namespace fringix::head {

struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Colour&) const = default;
};
static_assert(sizeof(Colour) == 3, "pixels are read from the wire as they are");

inline Colour grey(std::uint8_t level) { return {level, level, level}; }

struct Pattern {
  explicit Pattern(Size of) : size(of), pixels(static_cast<std::size_t>(of.width) * static_cast<std::size_t>(of.height)) {}  // black

  Colour* row(std::int32_t y) { return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width); }
  const Colour* row(std::int32_t y) const { return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width); }

  Size size;
  std::vector<Colour> pixels;
};

}  // namespace fringix::head
