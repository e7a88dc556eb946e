#include "head/optics/gray_code.h"

#include <cstdlib>

namespace fringix::head {

namespace {

std::uint16_t decodePixel(const std::vector<BitPictures>& bits, std::size_t pixel, int contrast) {
  std::uint32_t code = 0;
  for (const BitPictures& bit : bits) {
    const int difference = bit.plain->pixels[pixel] - bit.inverted->pixels[pixel];
    if (std::abs(difference) < contrast) return noCode;
    code = code << 1 | (difference > 0 ? 1U : 0U);
  }
  return static_cast<std::uint16_t>(fromGrayCode(code));
}

}  // namespace

std::vector<std::uint16_t> decodeGrayCode(const std::vector<BitPictures>& bits, int contrast) {
  std::vector<std::uint16_t> numbers(bits.front().plain->pixels.size());
  for (std::size_t pixel = 0; pixel < numbers.size(); ++pixel) numbers[pixel] = decodePixel(bits, pixel, contrast);
  return numbers;
}

}  // namespace fringix::head
