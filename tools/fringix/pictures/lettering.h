// Text in pictures, in a typeface whose characters are all of one width. The programs carry it inside.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "png/raster.h"

namespace fringix::tool {

inline constexpr std::uint32_t letterPitch = 11;   // pixels from one character to the next
inline constexpr std::uint32_t letterHeight = 21;  // from the top of capitals with accents to the bottom of small letters

// The characters of a text in UTF-8; U+FFFD for bytes that are none.
std::u32string charactersOf(std::string_view text);

// Draws `text` with its top left corner at x, y. An accent of its own goes on the character before it; for characters that the typeface
// does not have there is a box. What lies outside the picture is left out.
void drawText(png::Raster& raster, std::uint32_t x, std::uint32_t y, std::u32string_view text, std::uint8_t shade);

}  // namespace fringix::tool
