// Text in pictures: one size, capitals, digits and the signs that labels need.
#pragma once

#include <cstdint>
#include <string_view>

#include "png/raster.h"

namespace fringix::tool {

inline constexpr std::uint32_t letterPitch = 6;   // columns from one character to the next
inline constexpr std::uint32_t letterHeight = 7;  // rows of a character

// Draws `text` with its top left corner at x, y, each dot as a square of `scale` pixels. Small letters appear as capitals, characters
// that there is no drawing for as an empty box. What lies outside the picture is left out.
void drawText(png::Raster& raster, std::uint32_t x, std::uint32_t y, std::uint32_t scale, std::string_view text, std::uint8_t shade);

}  // namespace fringix::tool
