// Numbers drawn into pictures.
#pragma once

#include <cstdint>
#include <string_view>

#include "head/optics/picture.h"

namespace fringix::head {

// Draws digits of 5 x 7 squares of side `scale` in `shade`, their top left corner at x, y; every other character is a gap. What lies
// outside the picture is left out.
void drawDigits(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t scale, std::string_view text, std::uint8_t shade);

// Draws digits on a dark ground into the top left corner, readable but small.
void drawLabel(Picture& picture, std::string_view text);

}  // namespace fringix::head
