#include "pictures/lettering.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace fringix::tool {
namespace {

constexpr std::size_t glyphWidth = 5;

// Characters drawn side by side, one column apart.
struct Alphabet {
  std::string_view characters;
  std::string_view rows[letterHeight];
};

// clang-format off
constexpr Alphabet alphabets[] = {
    {"ABCDEFGHIJKLM", {
        " ###  ####   ###  ####  ##### #####  ###  #   #  ###    ### #   # #     #   #",
        "#   # #   # #   # #   # #     #     #   # #   #   #      #  #  #  #     ## ##",
        "#   # #   # #     #   # #     #     #     #   #   #      #  # #   #     # # #",
        "##### ####  #     #   # ####  ####  # ### #####   #      #  ##    #     # # #",
        "#   # #   # #     #   # #     #     #   # #   #   #      #  # #   #     #   #",
        "#   # #   # #   # #   # #     #     #   # #   #   #   #  #  #  #  #     #   #",
        "#   # ####   ###  ####  ##### #      ###  #   #  ###   ##   #   # ##### #   #"}},
    {"NOPQRSTUVWXYZ", {
        "#   #  ###  ####   ###  ####   #### ##### #   # #   # #   # #   # #   # #####",
        "##  # #   # #   # #   # #   # #       #   #   # #   # #   # #   # #   #     #",
        "# # # #   # #   # #   # #   # #       #   #   # #   # #   #  # #   # #     # ",
        "#  ## #   # ####  #   # ####   ###    #   #   # #   # # # #   #     #     #  ",
        "#   # #   # #     # # # # #       #   #   #   # #   # # # #  # #    #    #   ",
        "#   # #   # #     #  #  #  #      #   #   #   #  # #  ## ## #   #   #   #    ",
        "#   #  ###  #      ## # #   # ####    #    ###    #   #   # #   #   #   #####"}},
    {"0123456789", {
        " ###    #    ###   ###     #  #####  ###  #####  ###   ### ",
        "#   #  ##   #   # #   #   ##  #     #         # #   # #   #",
        "#  ##   #       #     #  # #  ####  #        #  #   # #   #",
        "# # #   #      #    ##  #  #      # ####    #    ###   ####",
        "##  #   #     #       # #####     # #   #   #   #   #     #",
        "#   #   #    #    #   #    #  #   # #   #   #   #   #     #",
        " ###   ###  #####  ###     #   ###   ###    #    ###   ### "}},
    {" .,:-_/()+=%#", {
        "                                        #    #   #                ##     # # ",
        "                   ##                   #   #     #     #         ##  #  # # ",
        "                   ##                  #   #       #    #   #####    #  #####",
        "                        #####         #    #       #  #####         #    # # ",
        "             ##    ##                #     #       #    #   #####  #    #####",
        "       ##     #    ##               #       #     #     #         #  ##  # # ",
        "       ##    #                ##### #        #   #                   ##  # # "}},
};
// clang-format on

constexpr Alphabet unknown = {"?", {"#####", "#   #", "#   #", "#   #", "#   #", "#   #", "#####"}};

struct Glyph {
  const Alphabet* alphabet;
  std::size_t column;

  bool dot(std::size_t x, std::size_t y) const { return alphabet->rows[y][column + x] == '#'; }
};

Glyph findGlyph(char character) {
  if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  for (const Alphabet& alphabet : alphabets) {
    const std::size_t place = alphabet.characters.find(character);
    if (place != std::string_view::npos) return {&alphabet, place * letterPitch};
  }
  return {&unknown, 0};
}

void fillSquare(png::Raster& raster, std::uint32_t x, std::uint32_t y, std::uint32_t side, std::uint8_t shade) {
  const std::uint32_t right = std::min(x + side, raster.width);
  const std::uint32_t bottom = std::min(y + side, raster.height);
  for (std::uint32_t row = y; row < bottom; ++row) {
    for (std::uint32_t column = x; column < right; ++column) std::fill_n(raster.pixel(column, row), raster.samplesPerPixel, shade);
  }
}

}  // namespace

void drawText(png::Raster& raster, std::uint32_t x, std::uint32_t y, std::uint32_t scale, std::string_view text, std::uint8_t shade) {
  for (const char character : text) {
    const Glyph glyph = findGlyph(character);
    for (std::uint32_t row = 0; row < letterHeight; ++row) {
      for (std::uint32_t column = 0; column < glyphWidth; ++column) {
        if (glyph.dot(column, row)) fillSquare(raster, x + column * scale, y + row * scale, scale, shade);
      }
    }
    x += letterPitch * scale;
  }
}

}  // namespace fringix::tool
