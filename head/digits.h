// Numbers drawn into pictures.
#pragma once

#include <cstdint>
#include <string_view>

#include "head/picture.h"

namespace fringix::head {

inline constexpr std::int32_t digitPitch = 6;   // columns from one character to the next, at scale 1
inline constexpr std::int32_t digitHeight = 7;  // rows of a character, at scale 1

// Draws digits in `shade`, their top left corner at x, y; every other character is a gap. What lies outside the picture is left out.
void drawDigits(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t scale, std::string_view text, std::uint8_t shade);

}  // namespace fringix::head
