// Pictures as PNG files: 8 and 16 bit gray and 24-bit RGB, rows from top to bottom without gaps.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fringix::png {

// A note in the file, such as a unit: keyword of 1 to 79 characters and text, both Latin-1.
struct Text {
  std::string keyword;
  std::string text;
};

// All give the whole file. They throw std::invalid_argument when width or height is 0, `pixels` has another size than they say, or a
// text cannot be one, and std::length_error where the format could not hold the picture.
std::vector<std::uint8_t> encodePngGray8(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels);
std::vector<std::uint8_t> encodePngGray16(std::uint32_t width, std::uint32_t height, std::span<const std::uint16_t> pixels,
                                          std::span<const Text> texts = {});
std::vector<std::uint8_t> encodePngRgb24(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels);

}  // namespace fringix::png
