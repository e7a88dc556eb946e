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
  for (LabelledPicture& picture : wide) picture.label = std::string(8, '#');
  EXPECT_EQ(pixelsOf(makeContactSheet(wide, {.columns = 2, .pictureWidth = 100}), 230), cut);
}

TEST(Lettering, DrawsDots) {
  png::Raster raster = png::filledRaster(6, 7, 1, 0);
  drawText(raster, 0, 0, 1, "T", 9);
  const std::vector<std::uint8_t> expected{
      9, 9, 9, 9, 9, 0,  //
      0, 0, 9, 0, 0, 0,  //
      0, 0, 9, 0, 0, 0,  //
      0, 0, 9, 0, 0, 0,  //
      0, 0, 9, 0, 0, 0,  //
      0, 0, 9, 0, 0, 0,  //
      0, 0, 9, 0, 0, 0,
  };
  EXPECT_EQ(raster.samples, expected);
}

TEST(Lettering, SmallLettersAreCapitals) {
  png::Raster small = png::filledRaster(200, 7, 1, 0);
  png::Raster capital = small;
  drawText(small, 0, 0, 1, "abcdefghijklmnopqrstuvwxyz", 9);
  drawText(capital, 0, 0, 1, "ABCDEFGHIJKLMNOPQRSTUVWXYZ", 9);
  EXPECT_EQ(small.samples, capital.samples);
}

TEST(Lettering, NoTwoCharactersLookAlike) {
  std::vector<std::vector<std::uint8_t>> drawings;
  for (const char character : std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .,:-_/()+=%#?")) {
    png::Raster raster = png::filledRaster(5, 7, 1, 0);
    drawText(raster, 0, 0, 1, std::string(1, character), 1);
    EXPECT_EQ(std::count(drawings.begin(), drawings.end(), raster.samples), 0) << character;
    drawings.push_back(raster.samples);
  }
}

TEST(Lettering, WhatLiesOutsideIsLeftOut) {
  png::Raster raster = png::filledRaster(8, 4, 3, 0);
  drawText(raster, 4, 2, 3, "####", 1);
  EXPECT_EQ(raster.samples.size(), 8U * 4 * 3);
}

TEST(Raster, ReducedPixelsAreMeans) {
  const png::Raster raster{4, 2, 1, {0, 2, 100, 100, 4, 6, 100, 104}};
  EXPECT_EQ(png::reduced(raster, 2, 1).samples, (std::vector<std::uint8_t>{3, 101}));
  EXPECT_EQ(png::reduced({3, 1, 1, {10, 20, 40}}, 2, 1).samples, (std::vector<std::uint8_t>{10, 30})) << "shares that do not come out even";
}

TEST(Raster, GrayAsRgb) { EXPECT_EQ(png::toRgb({2, 1, 1, {1, 2}}).samples, (std::vector<std::uint8_t>{1, 1, 1, 2, 2, 2})); }

}  // namespace
}  // namespace fringix::tool
