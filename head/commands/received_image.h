// Reads images that a client uploads.
#pragma once

#include <cstdint>
#include <optional>

#include "head/optics/pattern.h"
#include "head/wire/wire.h"

namespace fringix::head {

enum class PixelFormat : std::uint32_t { grey8 = 1, rgb24 = 3 };  // the value is the bytes of a pixel

// As a client states it: rows of `stride` bytes, of which the pixels are the first.
struct ImageShape {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t stride = 0;
};

// Reads an image of a size that fits the limit. Everything else is read to its end and forgotten, whatever its size.
std::optional<Pattern> readImage(Wire& wire, const ImageShape& shape, PixelFormat format, Size limit);

// Reads `length` bytes as one pixel for each of `count` columns or rows; likewise.
std::optional<std::vector<Colour>> readProfile(Wire& wire, std::uint32_t length, PixelFormat format, std::int32_t count);

}  // namespace fringix::head
