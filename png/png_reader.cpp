#include "png/png_reader.h"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "files/files.h"

namespace fringix::png {
namespace {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

constexpr std::uint64_t maximumPixels = std::uint64_t{1} << 28;
constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr const char* damaged = "is damaged";

[[noreturn]] void refuse(const std::string& reason) { throw std::runtime_error(reason); }

void require(bool condition, const char* reason) {
  if (!condition) refuse(reason);
}

std::uint32_t big32(View bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

struct Chunk {
  std::string_view type;
  View data;
};

// Takes the next chunk off the front of `file`.
Chunk takeChunk(View& file) {
  constexpr std::size_t frame = 12;  // length, type, check sum
  require(file.size() >= frame, damaged);
  const std::size_t length = big32(file);
  require(file.size() - frame >= length, damaged);
  const View checked = file.subspan(4, 4 + length);
  require(crc32_z(0, checked.data(), checked.size()) == big32(file.subspan(8 + length)), damaged);
  file = file.subspan(frame + length);
  return {{reinterpret_cast<const char*>(checked.data()), 4}, checked.subspan(4)};
}

// Gives an empty picture of the file's size and kind.
Raster readHeader(const Chunk& chunk) {
  require(chunk.type == "IHDR" && chunk.data.size() == 13, damaged);
  const std::uint32_t width = big32(chunk.data);
  const std::uint32_t height = big32(chunk.data.subspan(4));
  const unsigned bitDepth = chunk.data[8];
  const unsigned colorType = chunk.data[9];
  const bool interlaced = chunk.data[12] != 0;
  if (bitDepth != 8) refuse(fmt::format("has {} bits per sample; save it with 8", bitDepth));
  require(colorType != 3, "has a palette; save it as gray or RGB");
  require(colorType != 4 && colorType != 6, "has transparency; save it without (no alpha channel)");
  require(colorType == 0 || colorType == 2, damaged);
  require(!interlaced, "is interlaced; save it without interlacing");
  require(width > 0 && height > 0, damaged);
  if (std::uint64_t{width} * height > maximumPixels) refuse(fmt::format("has {} x {} pixels, which is too large", width, height));
  return {width, height, colorType == 2 ? 3U : 1U, {}};
}

// Joins the data chunks up to the end of the file.
Bytes collectData(View file) {
  Bytes packed;
  while (true) {
    const Chunk chunk = takeChunk(file);
    if (chunk.type == "IEND") return packed;
    if (chunk.type == "IDAT") packed.insert(packed.end(), chunk.data.begin(), chunk.data.end());
  }
}

// No data unpacks to more than 1032 times its size, so a small file cannot claim much memory.
Bytes inflated(const Bytes& packed, std::size_t expected) {
  require(expected / 1032 <= packed.size(), damaged);
  Bytes plain(expected);
  uLongf size = static_cast<uLongf>(expected);
  const int result = uncompress(plain.data(), &size, packed.data(), static_cast<uLong>(packed.size()));
  require(result == Z_OK && size == expected, damaged);
  return plain;
}

// Of left, above and above left the one that is nearest to left + above - above left; the first of those when several are.
int nearest(int left, int above, int aboveLeft) {
  const int estimate = left + above - aboveLeft;
  const int toLeft = std::abs(estimate - left);
  const int toAbove = std::abs(estimate - above);
  const int toAboveLeft = std::abs(estimate - aboveLeft);
  if (toLeft <= toAbove && toLeft <= toAboveLeft) return left;
  return toAbove <= toAboveLeft ? above : aboveLeft;
}

// What the filter of a row predicts for a sample from its neighbours.
int predict(unsigned filter, int left, int above, int aboveLeft) {
  switch (filter) {
    case 0:
      return 0;
    case 1:
      return left;
    case 2:
      return above;
    case 3:
      return (left + above) / 2;
    case 4:
      return nearest(left, above, aboveLeft);
    default:
      refuse(damaged);
  }
}

void undoFilter(unsigned filter, View filtered, std::span<std::uint8_t> row, View rowAbove, std::size_t pixelBytes) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    const bool first = i < pixelBytes;
    const int left = first ? 0 : row[i - pixelBytes];
    const int aboveLeft = first ? 0 : rowAbove[i - pixelBytes];
    row[i] = static_cast<std::uint8_t>(filtered[i] + predict(filter, left, rowAbove[i], aboveLeft));
  }
}

void readRows(Raster& raster, View filtered) {
  const std::size_t rowBytes = std::size_t{raster.width} * raster.samplesPerPixel;
  const Bytes black(rowBytes);
  raster.samples.resize(rowBytes * raster.height);
  View rowAbove = black;
  for (std::size_t y = 0; y < raster.height; ++y) {
    const std::span<std::uint8_t> row(raster.samples.data() + y * rowBytes, rowBytes);
    const View stored = filtered.subspan(y * (rowBytes + 1), rowBytes + 1);
    undoFilter(stored[0], stored.subspan(1), row, rowAbove, raster.samplesPerPixel);
    rowAbove = row;
  }
}

}  // namespace

Raster decodePng(View file) {
  require(file.size() > signature.size() && std::equal(signature.begin(), signature.end(), file.begin()), "is no PNG file");
  file = file.subspan(signature.size());
  Raster raster = readHeader(takeChunk(file));
  const std::size_t rowBytes = std::size_t{raster.width} * raster.samplesPerPixel;
  readRows(raster, inflated(collectData(file), (rowBytes + 1) * raster.height));
  return raster;
}

Raster readPng(const std::string& path) {
  const Bytes file = files::readFile(path);
  try {
    return decodePng(file);
  } catch (const std::runtime_error& error) {
    refuse(fmt::format("\"{}\" {}", path, error.what()));
  }
}

}  // namespace fringix::png
