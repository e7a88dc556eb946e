// The reflected binary code: neighbouring numbers differ in one bit.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/picture.h"

namespace fringix::head {

constexpr std::uint32_t grayCode(std::uint32_t number) { return number ^ number >> 1; }

constexpr std::uint32_t fromGrayCode(std::uint32_t code) {
  for (std::uint32_t shift = 16; shift > 0; shift /= 2) code ^= code >> shift;
  return code;
}

// Two pictures of one bit: under the pattern and under its inverse.
struct BitPictures {
  const Picture* plain;
  const Picture* inverted;
};

inline constexpr std::uint16_t noCode = 0xFFFF;

// For each pixel the column or row that lit it, from the pictures of its bits, the coarsest first; `noCode` where the two pictures of
// a bit differ by less than `contrast` (the pixel is in shadow, say).
std::vector<std::uint16_t> decodeGrayCode(const std::vector<BitPictures>& bits, int contrast);

}  // namespace fringix::head
