#include "head/optics/digits.h"

#include <algorithm>
#include <array>

namespace fringix::head {

namespace {

constexpr std::int32_t glyphWidth = 5;
constexpr std::int32_t glyphHeight = 7;
constexpr std::int32_t pitch = glyphWidth + 1;  // columns from one character to the next
constexpr std::int32_t margin = 2;              // around a label
constexpr std::uint8_t ground = 1;
constexpr std::uint8_t ink = 255;

using Glyph = std::array<std::uint8_t, glyphHeight>;  // one row a byte, the leftmost column in bit 4

constexpr std::array<Glyph, 10> glyphs{{
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E},
    {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1F},
    {0x1F, 0x02, 0x04, 0x06, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02},
    {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E},
    {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E},
    {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C},
}};

void fillBox(Picture& picture, std::int32_t left, std::int32_t top, Size box, std::uint8_t shade) {
  const std::int32_t right = std::min(left + box.width, picture.size.width);
  const std::int32_t bottom = std::min(top + box.height, picture.size.height);
  left = std::max(left, 0);
  for (std::int32_t y = std::max(top, 0); y < bottom && left < right; ++y) std::fill(picture.row(y) + left, picture.row(y) + right, shade);
}

void drawGlyph(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t scale, const Glyph& glyph, std::uint8_t shade) {
  for (std::int32_t row = 0; row < glyphHeight; ++row) {
    for (std::int32_t column = 0; column < glyphWidth; ++column) {
      const bool inked = (glyph[static_cast<std::size_t>(row)] >> (glyphWidth - 1 - column) & 1) != 0;
      if (inked) fillBox(picture, x + column * scale, y + row * scale, {scale, scale}, shade);
    }
  }
}

}  // namespace

void drawDigits(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t scale, std::string_view text, std::uint8_t shade) {
  for (const char character : text) {
    if (character >= '0' && character <= '9') drawGlyph(picture, x, y, scale, glyphs[static_cast<std::size_t>(character - '0')], shade);
    x += pitch * scale;
  }
}

void drawLabel(Picture& picture, std::string_view text) {
  const std::int32_t scale = std::max(1, picture.size.height / 256);
  const std::int32_t columns = static_cast<std::int32_t>(text.size()) * pitch - 1;
  fillBox(picture, 0, 0, {(columns + 2 * margin) * scale, (glyphHeight + 2 * margin) * scale}, ground);
  drawDigits(picture, margin * scale, margin * scale, scale, text, ink);
}

}  // namespace fringix::head
