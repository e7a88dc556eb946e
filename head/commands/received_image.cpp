#include "head/commands/received_image.h"

#include <algorithm>
#include <utility>

#include "head/commands/transfers.h"

namespace fringix::head {

namespace {

bool fits(const ImageShape& shape, PixelFormat format, Size limit) {
  const bool empty = shape.width == 0 || shape.height == 0;
  const bool small = std::int64_t{shape.width} <= limit.width && std::int64_t{shape.height} <= limit.height;
  return !empty && small && shape.stride >= std::uint64_t{shape.width} * static_cast<std::uint32_t>(format);
}

void readPixels(Wire& wire, PixelFormat format, Colour* pixels, std::size_t count) {
  auto* bytes = reinterpret_cast<std::uint8_t*>(pixels);
  wire.readBytes(bytes, count * static_cast<std::size_t>(format));
  if (format == PixelFormat::rgb24) return;
  for (std::size_t i = count; i > 0; --i) pixels[i - 1] = grey(bytes[i - 1]);  // from the end: the bytes stand where the pixels go
}

ReceivedImage refuse(Wire& wire, const ImageShape& shape, Status reason) {
  wire.skip(std::uint64_t{shape.height} * shape.stride);
  return {reason};
}

Pattern readPattern(Wire& wire, const ImageShape& shape, PixelFormat format) {
  Pattern pattern({static_cast<std::int32_t>(shape.width), static_cast<std::int32_t>(shape.height)});
  for (std::int32_t y = 0; y < pattern.size.height; ++y) {
    readPixels(wire, format, pattern.row(y), shape.width);
    wire.skip(shape.stride - shape.width * static_cast<std::uint32_t>(format));
  }
  return pattern;
}

}  // namespace

ReceivedImage readImage(Call& call, const ImageShape& shape, PixelFormat format) {
  if (!fits(shape, format, call.model.settings().projector)) return refuse(call.wire, shape, Status::badParameter);
  auto room = takeRoomForPattern(call);
  if (!room) return refuse(call.wire, shape, Status::outOfMemory);
  return {Status::ok, readPattern(call.wire, shape, format), std::move(*room)};
}

std::optional<std::vector<Colour>> readProfile(Wire& wire, std::uint32_t length, PixelFormat format, std::int32_t count) {
  if (length != static_cast<std::uint64_t>(count) * static_cast<std::uint32_t>(format)) {
    wire.skip(length);
    return std::nullopt;
  }
  std::vector<Colour> profile(static_cast<std::size_t>(count));
  readPixels(wire, format, profile.data(), profile.size());
  return profile;
}

}  // namespace fringix::head
