#include "pictures/contact_sheet.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "pictures/lettering.h"

namespace fringix::tool {
namespace {

std::vector<LabelledPicture> pictures(std::size_t count, std::uint32_t width, std::uint32_t height) {
  return std::vector<LabelledPicture>(count, {"a", png::filledRaster(width, height, 1, 200)});
}

std::size_t pixelsOf(const png::Raster& sheet, std::uint8_t shade) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < sheet.samples.size(); i += 3) {
    if (std::count(&sheet.samples[i], &sheet.samples[i] + 3, shade) == 3) ++count;
  }
  return count;
}

TEST(ContactSheet, ShowsEveryPictureOnce) {
  const png::Raster sheet = makeContactSheet(pictures(5, 40, 30), {});
  EXPECT_EQ(sheet.samplesPerPixel, 3U);
  EXPECT_EQ(sheet.samples.size(), std::size_t{sheet.width} * sheet.height * 3);
  EXPECT_EQ(pixelsOf(sheet, 200), 5U * 40 * 30);
}

TEST(ContactSheet, ReducesLargePictures) {
  EXPECT_EQ(pixelsOf(makeContactSheet(pictures(1, 1000, 500), {.columns = 1, .pictureWidth = 100}), 200), 100U * 50);
}

TEST(ContactSheet, IsAboutSquareUnlessTold) {
  const auto sheetWidth = [](std::size_t count, std::uint32_t columns) {
    return makeContactSheet(pictures(count, 100, 100), {.columns = columns, .pictureWidth = 100}).width;
  };
  EXPECT_EQ(sheetWidth(9, 0), sheetWidth(9, 3));
  EXPECT_EQ(sheetWidth(10, 0), sheetWidth(10, 4));
  EXPECT_EQ(sheetWidth(2, 5), sheetWidth(2, 2)) << "no empty places beside a single row";
}

TEST(ContactSheet, LabelStaysBelowItsPicture) {
  std::vector<LabelledPicture> wide = pictures(2, 100, 10);
  for (LabelledPicture& picture : wide) picture.label = std::string(100, '#');
  const png::Raster sheet = makeContactSheet(wide, {.columns = 2, .pictureWidth = 100});
  EXPECT_EQ(pixelsOf(sheet, 200), 2U * 100 * 10) << "no label covers a picture";
  const auto cut = pixelsOf(sheet, 230);
  for (LabelledPicture& picture : wide) picture.label = std::string(100 / letterPitch, '#');
  EXPECT_EQ(pixelsOf(makeContactSheet(wide, {.columns = 2, .pictureWidth = 100}), 230), cut);
}

std::vector<std::uint8_t> drawn(const std::string& text) {
  png::Raster raster = png::filledRaster(3 * letterPitch, letterHeight, 1, 0);
  drawText(raster, 0, 0, charactersOf(text), 200);
  return raster.samples;
}

// A row of the picture as text: '#' where there is ink.
std::string rowOf(const std::vector<std::uint8_t>& samples, std::size_t row) {
  std::string text;
  for (std::size_t x = 0; x < letterPitch; ++x) text.push_back(samples[row * 3 * letterPitch + x] > 20 ? '#' : '.');
  return text;
}

TEST(Lettering, CharactersAreWhereTheyAreExpected) {
  EXPECT_EQ(drawn(" "), std::vector<std::uint8_t>(std::size_t{3} * letterPitch * letterHeight));
  const auto bar = drawn("_");
  std::size_t inked = 0;
  for (std::size_t row = 0; row < letterHeight; ++row)
    if (rowOf(bar, row).find('#') != std::string::npos) inked = row;
  EXPECT_GT(inked, letterHeight * 3 / 4) << "an underscore lies at the bottom";
  EXPECT_NE(drawn(" T"), drawn("T"));
}

TEST(Lettering, NoTwoCharactersLookAlike) {
  std::vector<std::vector<std::uint8_t>> drawings;
  const std::string text =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 .,:;-_/()+=%#?!\u00E4\u00F6\u00FC\u00DF\u00E9\u00E8\u00F1\u0142"
      "\u03C6\u0416";
  for (const char32_t character : charactersOf(text)) {
    png::Raster raster = png::filledRaster(letterPitch, letterHeight, 1, 0);
    drawText(raster, 0, 0, std::u32string(1, character), 200);
    EXPECT_EQ(std::count(drawings.begin(), drawings.end(), raster.samples), 0) << static_cast<unsigned>(character);
    drawings.push_back(raster.samples);
  }
}

TEST(Lettering, AccentOfItsOwnGoesOnTheLetterBefore) {
  const auto composed = drawn("e\u0301x");
  EXPECT_NE(composed, drawn("ex"));
  const std::size_t place = 2 * letterPitch;  // the third letter's: nothing moves
  for (std::size_t row = 0; row < letterHeight; ++row) {
    for (std::size_t x = place; x < place + letterPitch; ++x) EXPECT_EQ(composed[row * 3 * letterPitch + x], 0);
  }
}

TEST(Lettering, TextIsReadAsUtf8) {
  EXPECT_EQ(charactersOf("a\u00E9\u20AC\U0001F600"), U"a\u00E9\u20AC\U0001F600");
  EXPECT_EQ(charactersOf("\xE9z"), U"\uFFFDz") << "Latin-1 is none";
  EXPECT_EQ(charactersOf("\xFF\x80\xC0"), U"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(charactersOf("\xE2\x82"), U"\uFFFD") << "cut";
}

TEST(Lettering, UnknownCharacterIsABox) { EXPECT_NE(drawn("\U0010FFFF"), drawn(" ")); }

TEST(Lettering, WhatLiesOutsideIsLeftOut) {
  png::Raster raster = png::filledRaster(8, 4, 3, 0);
  drawText(raster, 4, 2, U"####", 1);
  EXPECT_EQ(raster.samples.size(), 8U * 4 * 3);
}

}  // namespace
}  // namespace fringix::tool
