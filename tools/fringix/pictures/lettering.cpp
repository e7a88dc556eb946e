#include "pictures/lettering.h"

#include <stb/stb_truetype.h>

#include <cstddef>
#include <stdexcept>
#include <vector>

#include "pictures/typeface.h"

namespace fringix::tool {
namespace {

constexpr char32_t unreadable = 0xFFFD;

struct Letters {
  Letters() {
    if (stbtt_InitFont(&font, reinterpret_cast<const unsigned char*>(typeface().data()), 0) == 0)
      throw std::logic_error("the typeface cannot be read");
    int ascent = 0;
    stbtt_GetFontVMetrics(&font, &ascent, nullptr, nullptr);
    scale = stbtt_ScaleForPixelHeight(&font, static_cast<float>(letterHeight));
    baseline = static_cast<int>(static_cast<float>(ascent) * scale);
  }

  stbtt_fontinfo font{};
  float scale = 0;
  int baseline = 0;  // below the top of the text
};

const Letters& letters() {
  static const Letters loaded;
  return loaded;
}

// How dark each pixel of a character is.
struct Drawing {
  explicit Drawing(char32_t character) {
    const auto [font, scale, baseline] = letters();
    const int glyph = stbtt_FindGlyphIndex(&font, static_cast<int>(character));
    int right = 0;
    int bottom = 0;
    stbtt_GetGlyphBitmapBox(&font, glyph, scale, scale, &left, &top, &right, &bottom);
    width = right - left;
    height = bottom - top;
    top += baseline;
    coverage.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    if (!coverage.empty()) stbtt_MakeGlyphBitmap(&font, coverage.data(), width, height, width, scale, scale, glyph);
  }

  int left = 0;  // of the character's place
  int top = 0;
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> coverage;
};

void blend(png::Raster& raster, std::int64_t x, std::int64_t y, std::uint8_t shade, unsigned coverage) {
  if (x < 0 || y < 0 || x >= raster.width || y >= raster.height) return;
  std::uint8_t* pixel = raster.pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
  for (std::uint32_t i = 0; i < raster.samplesPerPixel; ++i)
    pixel[i] = static_cast<std::uint8_t>((pixel[i] * (255 - coverage) + shade * coverage + 127) / 255);
}

void draw(png::Raster& raster, std::int64_t x, std::int64_t y, const Drawing& drawing, std::uint8_t shade) {
  for (int row = 0; row < drawing.height; ++row) {
    for (int column = 0; column < drawing.width; ++column) {
      const auto place = static_cast<std::size_t>(row) * static_cast<std::size_t>(drawing.width) + static_cast<std::size_t>(column);
      blend(raster, x + drawing.left + column, y + drawing.top + row, shade, drawing.coverage[place]);
    }
  }
}

bool isAccent(char32_t character) { return character >= 0x300 && character <= 0x36F; }

// How many bytes follow the first one of a character, and how many of its bits are the character's; none for other bytes.
struct Lead {
  explicit Lead(unsigned char byte)
      : following(byte < 0x80                   ? 0
                  : byte >= 0xC2 && byte < 0xE0 ? 1
                  : (byte & 0xF0) == 0xE0       ? 2
                  : byte >= 0xF0 && byte < 0xF5 ? 3
                                                : -1),
        bits(following == 0 ? byte : byte & (0x3FU >> following)) {}

  int following;
  char32_t bits;
};

// Takes the next character off the front of `text`.
char32_t takeCharacter(std::string_view& text) {
  const Lead lead(static_cast<unsigned char>(text.front()));
  text.remove_prefix(1);
  if (lead.following < 0) return unreadable;
  char32_t character = lead.bits;
  for (int i = 0; i < lead.following; ++i) {
    if (text.empty() || (text.front() & 0xC0) != 0x80) return unreadable;
    character = character << 6 | (static_cast<unsigned char>(text.front()) & 0x3FU);
    text.remove_prefix(1);
  }
  return character;
}

}  // namespace

std::u32string charactersOf(std::string_view text) {
  std::u32string characters;
  while (!text.empty()) characters.push_back(takeCharacter(text));
  return characters;
}

void drawText(png::Raster& raster, std::uint32_t x, std::uint32_t y, std::u32string_view text, std::uint8_t shade) {
  std::int64_t next = x;
  for (const char32_t character : text) {
    const std::int64_t place = isAccent(character) && next > x ? next - letterPitch : next;
    draw(raster, place, y, Drawing(character), shade);
    next = place + letterPitch;
  }
}

}  // namespace fringix::tool
