// Reads the PNG files that the writer makes back with zlib, checking every field and check sum on the way.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::test {

struct DecodedPng {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned bitDepth = 0;
  unsigned colorType = 0;
  std::map<std::string, std::string> texts;  // by keyword
  std::vector<std::uint8_t> samples;         // as in the file: 16-bit values have their most significant byte first
};

// Throws std::runtime_error at the first byte that is not as the format wants it. Not interlaced pictures with 8 or 16 bits per
// sample, gray or RGB, filters 0 (none) and 2 (difference to the row above).
DecodedPng decodePng(std::string_view file);

}  // namespace fringix::test
