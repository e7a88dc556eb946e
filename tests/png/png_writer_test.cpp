#include "png/png_writer.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string_view>

#include "png/png_decoder.h"

namespace fringix::png {
namespace {

test::DecodedPng decoded(const std::vector<std::uint8_t>& file) {
  return test::decodePng({reinterpret_cast<const char*>(file.data()), file.size()});
}

std::vector<std::uint8_t> noise(std::size_t count) {
  std::mt19937 random(7);
  std::vector<std::uint8_t> bytes(count);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

TEST(PngWriter, Gray8) {
  const auto pixels = noise(61 * 17);
  const auto png = decoded(encodePngGray8(61, 17, pixels));
  EXPECT_EQ(png.width, 61U);
  EXPECT_EQ(png.height, 17U);
  EXPECT_EQ(png.bitDepth, 8U);
  EXPECT_EQ(png.colorType, 0U);
  EXPECT_EQ(png.samples, pixels);
}

TEST(PngWriter, Rgb24) {
  const auto pixels = noise(5 * 9 * 3);
  const auto png = decoded(encodePngRgb24(5, 9, pixels));
  EXPECT_EQ(png.width, 5U);
  EXPECT_EQ(png.height, 9U);
  EXPECT_EQ(png.bitDepth, 8U);
  EXPECT_EQ(png.colorType, 2U);
  EXPECT_EQ(png.samples, pixels);
}

TEST(PngWriter, Gray16HasItsMostSignificantByteFirst) {
  const std::vector<std::uint16_t> pixels{0x0102, 0x0304, 0xFFFE, 0x8000, 0x0000, 0x00FF};
  const auto png = decoded(encodePngGray16(2, 3, pixels));
  EXPECT_EQ(png.width, 2U);
  EXPECT_EQ(png.height, 3U);
  EXPECT_EQ(png.bitDepth, 16U);
  EXPECT_EQ(png.colorType, 0U);
  EXPECT_EQ(png.samples, (std::vector<std::uint8_t>{1, 2, 3, 4, 0xFF, 0xFE, 0x80, 0, 0, 0, 0, 0xFF}));
}

TEST(PngWriter, SinglePixel) {
  EXPECT_EQ(decoded(encodePngGray8(1, 1, std::vector<std::uint8_t>{200})).samples, std::vector<std::uint8_t>{200});
}

TEST(PngWriter, WholeCameraPicture) {
  const auto pixels = noise(1280 * 1024);
  EXPECT_EQ(decoded(encodePngGray8(1280, 1024, pixels)).samples, pixels);
}

TEST(PngWriter, PatternsPackWell) {
  std::vector<std::uint8_t> stripes(1280 * 800);
  for (std::size_t i = 0; i < stripes.size(); ++i) stripes[i] = i % 16 < 8 ? 255 : 0;
  const auto file = encodePngGray8(1280, 800, stripes);
  EXPECT_LT(file.size(), 10'000U);
  EXPECT_EQ(decoded(file).samples, stripes);
}

TEST(PngWriter, RefusesPixelsOfAnotherSize) {
  const auto pixels = noise(12);
  EXPECT_THROW(encodePngGray8(3, 5, pixels), std::invalid_argument);
  EXPECT_THROW(encodePngRgb24(3, 4, pixels), std::invalid_argument);
  EXPECT_THROW(encodePngGray8(0, 4, {}), std::invalid_argument);
  EXPECT_THROW(encodePngGray8(4, 0, {}), std::invalid_argument);
}

TEST(PngWriter, RefusesWhatTheFormatCannotHold) {
  EXPECT_THROW(encodePngGray8(0x80000000U, 1, {}), std::length_error);
  EXPECT_THROW(encodePngRgb24(1, 0xFFFFFFFFU, {}), std::length_error);
  EXPECT_THROW(encodePngGray8(65536, 65536, {}), std::invalid_argument) << "no size wraps around";
}

TEST(PngWriter, Gray16WithTexts) {
  const std::vector<Text> texts{{"unit", "mm"}, {"scale", "0.1"}};
  const auto png = decoded(encodePngGray16(2, 1, std::vector<std::uint16_t>{1, 2}, texts));
  EXPECT_EQ(png.texts, (std::map<std::string, std::string>{{"unit", "mm"}, {"scale", "0.1"}}));
  EXPECT_EQ(png.samples, (std::vector<std::uint8_t>{0, 1, 0, 2}));
}

TEST(PngWriter, RefusesTextsThatCannotBe) {
  const auto written = [](const Text& text) { return encodePngGray16(1, 1, std::vector<std::uint16_t>{1}, std::span(&text, 1)); };
  EXPECT_NO_THROW(written({std::string(79, 'k'), "text"}));
  EXPECT_THROW(written({std::string(80, 'k'), "text"}), std::invalid_argument);
  EXPECT_THROW(written({"", "text"}), std::invalid_argument);
  EXPECT_THROW(written({" unit", "text"}), std::invalid_argument);
  EXPECT_THROW(written({"unit", ""}), std::invalid_argument);
}

}  // namespace
}  // namespace fringix::png
