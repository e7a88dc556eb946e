#include "png/png_writer.h"

#include <zlib.h>

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>

namespace fringix::png {
namespace {

using Bytes = std::vector<std::uint8_t>;

enum class ColorType : std::uint8_t { gray = 0, rgb = 2 };

// Chunk lengths and the sizes of the picture are 31 bits in the format.
constexpr std::uint64_t maximumLength = 0x7FFFFFFF;
constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

void append32(Bytes& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void appendChunk(Bytes& out, std::string_view type, const Bytes& data) {
  if (data.size() > maximumLength) throw std::length_error("the picture is too large for a PNG file");
  append32(out, static_cast<std::uint32_t>(data.size()));
  const std::size_t checked = out.size();
  out.insert(out.end(), type.begin(), type.end());
  out.insert(out.end(), data.begin(), data.end());
  append32(out, static_cast<std::uint32_t>(crc32_z(0, out.data() + checked, out.size() - checked)));
}

Bytes header(std::uint32_t width, std::uint32_t height, std::uint8_t bitDepth, ColorType color) {
  Bytes data;
  append32(data, width);
  append32(data, height);
  data.insert(data.end(), {bitDepth, static_cast<std::uint8_t>(color), 0, 0, 0});  // deflate, adaptive filters, not interlaced
  return data;
}

// Each row is stored as the differences to the row above (filter 2), which pictures of a camera pack better as than as they are.
Bytes filterRows(std::span<const std::uint8_t> samples, std::size_t rowBytes) {
  constexpr std::uint8_t differenceToRowAbove = 2;
  Bytes filtered;
  filtered.reserve(samples.size() + samples.size() / rowBytes);
  for (std::size_t row = 0; row < samples.size(); row += rowBytes) {
    filtered.push_back(differenceToRowAbove);
    for (std::size_t i = row; i < row + rowBytes; ++i) {
      const std::uint8_t above = row == 0 ? std::uint8_t{0} : samples[i - rowBytes];
      filtered.push_back(static_cast<std::uint8_t>(samples[i] - above));
    }
  }
  return filtered;
}

// Packs runs only: the differences of a noisy picture have no repetitions that are worth a search, those of a pattern are runs.
Bytes deflated(Bytes data) {
  constexpr int windowBits = 15;
  constexpr int memoryLevel = 9;
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, windowBits, memoryLevel, Z_RLE) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&deflateEnd)> ended(&stream, deflateEnd);
  Bytes packed(deflateBound(&stream, static_cast<uLong>(data.size())));
  stream.next_in = data.data();
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = packed.data();
  stream.avail_out = static_cast<uInt>(packed.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::runtime_error("zlib cannot pack the picture");
  packed.resize(stream.total_out);
  return packed;
}

void requireSize(std::uint32_t width, std::uint32_t height, std::uint64_t bytesPerPixel, std::size_t bytes) {
  if (width == 0 || height == 0) throw std::invalid_argument("a PNG picture has at least one pixel");
  const std::uint64_t rowBytes = width * bytesPerPixel;
  if (rowBytes > maximumLength || (rowBytes + 1) * height > maximumLength)
    throw std::length_error("the picture is too large for a PNG file");
  if (rowBytes * height != bytes) throw std::invalid_argument("the pixels do not match the size of the picture");
}

Bytes encode(std::uint32_t width, std::uint32_t height, std::uint8_t bitDepth, ColorType color, std::span<const std::uint8_t> samples) {
  const std::size_t bytesPerPixel = (color == ColorType::rgb ? 3U : 1U) * bitDepth / 8U;
  requireSize(width, height, bytesPerPixel, samples.size());
  Bytes file(signature.begin(), signature.end());
  appendChunk(file, "IHDR", header(width, height, bitDepth, color));
  appendChunk(file, "IDAT", deflated(filterRows(samples, width * bytesPerPixel)));
  appendChunk(file, "IEND", {});
  return file;
}

}  // namespace

Bytes encodePngGray8(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels) {
  return encode(width, height, 8, ColorType::gray, pixels);
}

Bytes encodePngGray16(std::uint32_t width, std::uint32_t height, std::span<const std::uint16_t> pixels) {
  Bytes samples;  // most significant byte first
  samples.reserve(pixels.size() * 2);
  for (const std::uint16_t pixel : pixels) {
    samples.push_back(static_cast<std::uint8_t>(pixel >> 8));
    samples.push_back(static_cast<std::uint8_t>(pixel & 0xFF));
  }
  return encode(width, height, 16, ColorType::gray, samples);
}

Bytes encodePngRgb24(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels) {
  return encode(width, height, 8, ColorType::rgb, pixels);
}

}  // namespace fringix::png
