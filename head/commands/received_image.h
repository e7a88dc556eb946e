// Reads images that a client uploads.
#pragma once

#include <cstdint>
#include <optional>

#include "head/commands/commands.h"
#include "head/model/memory_budget.h"
#include "head/optics/pattern.h"
#include "head/settings/status.h"

namespace fringix::head {

enum class PixelFormat : std::uint32_t { grey8 = 1, rgb24 = 3 };  // the value is the bytes of a pixel

// As a client states it: rows of `stride` bytes, of which the pixels are the first.
struct ImageShape {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t stride = 0;
};

// What arrived, or why it is refused, and the memory that it has until it is stored.
struct ReceivedImage {
  Status status = Status::ok;
  std::optional<Pattern> pattern{};
  MemoryBudget::Share room{};
};

// Reads an image of a size that fits the projector. Everything else is read to its end and forgotten, whatever its size.
ReceivedImage readImage(Call& call, const ImageShape& shape, PixelFormat format);

// Reads `length` bytes as one pixel for each of `count` columns or rows; likewise.
std::optional<std::vector<Colour>> readProfile(Wire& wire, std::uint32_t length, PixelFormat format, std::int32_t count);

}  // namespace fringix::head
