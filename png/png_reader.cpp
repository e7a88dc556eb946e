#include "png/png_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include "files/files.h"
#include "png/context.h"

namespace fringix::png {
namespace {

using View = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t rgba = 4;  // samples of a pixel as it is decoded

[[noreturn]] void refuse(const std::string& reason) { throw std::runtime_error(reason); }

void require(int result) {
  if (result == SPNG_EMEM) throw std::bad_alloc();
  if (result != SPNG_OK) refuse("is damaged");
}

bool isGray(const spng_ihdr& header) {
  return header.color_type == SPNG_COLOR_TYPE_GRAYSCALE || header.color_type == SPNG_COLOR_TYPE_GRAYSCALE_ALPHA;
}

// Each pixel has at least one bit, and no data unpacks to more than 1032 times its size: a small file cannot claim much memory.
void requireBounded(const spng_ihdr& header, std::size_t fileSize) {
  const std::uint64_t pixels = std::uint64_t{header.width} * header.height;
  if (pixels > maximumPixels)
    refuse(fmt::format("has {} x {} pixels, and at most {} altogether are taken", header.width, header.height, maximumPixels));
  if (pixels * header.bit_depth / 8 / 1032 > fileSize) require(SPNG_EIDAT_TOO_SHORT);
}

spng_ihdr readHeader(spng_ctx* context, View file) {
  const bool signedAsPng = file.size() >= signature.size() && std::equal(signature.begin(), signature.end(), file.begin());
  if (!signedAsPng) refuse("is no PNG file");
  require(spng_set_png_buffer(context, file.data(), file.size()));
  spng_ihdr header{};
  require(spng_get_ihdr(context, &header));
  requireBounded(header, file.size());
  return header;
}

std::uint8_t onBlack(std::uint8_t sample, std::uint8_t opacity) { return static_cast<std::uint8_t>((sample * opacity + 127) / 255); }

// Keeps the first samples of each pixel, in place.
void dropTransparency(std::vector<std::uint8_t>& samples, std::size_t kept) {
  const std::size_t pixels = samples.size() / rgba;
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint8_t opacity = samples[i * rgba + 3];
    for (std::size_t k = 0; k < kept; ++k) samples[i * kept + k] = onBlack(samples[i * rgba + k], opacity);
  }
  samples.resize(pixels * kept);
  samples.shrink_to_fit();
}

}  // namespace

Raster decodePng(View file) {
  const Context context = makeContext(0);
  const spng_ihdr header = readHeader(context.get(), file);
  std::vector<std::uint8_t> samples(std::size_t{header.width} * header.height * rgba);
  require(spng_decode_image(context.get(), samples.data(), samples.size(), SPNG_FMT_RGBA8, SPNG_DECODE_TRNS));
  require(spng_decode_chunks(context.get()));  // up to the end
  const std::uint32_t kept = isGray(header) ? 1 : 3;
  dropTransparency(samples, kept);
  return {header.width, header.height, kept, std::move(samples)};
}

Raster readPng(const std::string& path) {
  const std::vector<std::uint8_t> file = files::readFile(path, maximumFileSize);
  try {
    return decodePng(file);
  } catch (const std::runtime_error& error) {
    refuse(fmt::format("\"{}\" {}", path, error.what()));
  } catch (const std::bad_alloc&) {
    refuse(fmt::format("\"{}\" is too large for the memory of this machine", path));
  }
}

}  // namespace fringix::png
