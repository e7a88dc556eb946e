#include "png/png_writer.h"

#include <zlib.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

#include "png/context.h"

namespace fringix::png {
namespace {

void require(int result) {
  if (result == SPNG_EMEM) throw std::bad_alloc();
  if (result != SPNG_OK) throw std::runtime_error(std::string("cannot write the picture as PNG: ") + spng_strerror(result));
}

struct Free {
  void operator()(void* memory) const noexcept { std::free(memory); }
};

// Each row is stored as the differences to the row above, which pictures of a camera pack better as than as they are, and runs only are
// packed: the differences of a noisy picture have no repetitions that are worth a search, those of a pattern are runs.
void choosePacking(spng_ctx* context) {
  require(spng_set_option(context, SPNG_FILTER_CHOICE, SPNG_FILTER_CHOICE_UP));
  require(spng_set_option(context, SPNG_IMG_COMPRESSION_LEVEL, Z_BEST_SPEED));
  require(spng_set_option(context, SPNG_IMG_COMPRESSION_STRATEGY, Z_RLE));
}

void requireSize(const spng_ihdr& header, std::size_t bytesPerPixel, std::size_t bytes) {
  constexpr std::uint32_t longestSide = 0x7FFFFFFF;  // of the format
  if (header.width == 0 || header.height == 0) throw std::invalid_argument("a PNG picture has at least one pixel");
  if (header.width > longestSide || header.height > longestSide) throw std::length_error("the picture is too large for a PNG file");
  const bool whole = bytes % bytesPerPixel == 0;
  if (!whole || std::uint64_t{header.width} * header.height != bytes / bytesPerPixel)
    throw std::invalid_argument("the pixels do not match the size of the picture");
}

// The library keeps where they are until it has written them.
void addTexts(spng_ctx* context, std::span<const Text> texts) {
  std::vector<spng_text> chunks;
  for (const Text& text : texts) {
    spng_text& chunk = chunks.emplace_back();
    if (text.keyword.empty() || text.keyword.size() >= sizeof chunk.keyword)
      throw std::invalid_argument("the keyword of a text has 1 to 79 characters");
    text.keyword.copy(chunk.keyword, text.keyword.size());
    chunk.type = SPNG_TEXT;
    chunk.length = text.text.size();
    chunk.text = const_cast<char*>(text.text.data());
  }
  if (!chunks.empty() && spng_set_text(context, chunks.data(), static_cast<std::uint32_t>(chunks.size())) != SPNG_OK)
    throw std::invalid_argument("the text cannot be written to a PNG file");
}

std::vector<std::uint8_t> takeFile(spng_ctx* context) {
  std::size_t size = 0;
  int result = SPNG_OK;
  const std::unique_ptr<void, Free> file(spng_get_png_buffer(context, &size, &result));
  require(result);
  const auto* bytes = static_cast<const std::uint8_t*>(file.get());
  return {bytes, bytes + size};
}

// Samples of 16 bits are numbers of this machine.
std::vector<std::uint8_t> encode(spng_ihdr header, std::span<const std::byte> samples, std::span<const Text> texts) {
  requireSize(header, (header.color_type == SPNG_COLOR_TYPE_TRUECOLOR ? 3U : 1U) * header.bit_depth / 8U, samples.size());
  const Context context = makeContext(SPNG_CTX_ENCODER);
  require(spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1));
  require(spng_set_ihdr(context.get(), &header));
  choosePacking(context.get());
  addTexts(context.get(), texts);
  require(spng_encode_image(context.get(), samples.data(), samples.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE));
  return takeFile(context.get());
}

}  // namespace

std::vector<std::uint8_t> encodePngGray8(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels) {
  return encode({width, height, 8, SPNG_COLOR_TYPE_GRAYSCALE, 0, 0, 0}, std::as_bytes(pixels), {});
}

std::vector<std::uint8_t> encodePngGray16(std::uint32_t width, std::uint32_t height, std::span<const std::uint16_t> pixels,
                                          std::span<const Text> texts) {
  return encode({width, height, 16, SPNG_COLOR_TYPE_GRAYSCALE, 0, 0, 0}, std::as_bytes(pixels), texts);
}

std::vector<std::uint8_t> encodePngRgb24(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels) {
  return encode({width, height, 8, SPNG_COLOR_TYPE_TRUECOLOR, 0, 0, 0}, std::as_bytes(pixels), {});
}

}  // namespace fringix::png
