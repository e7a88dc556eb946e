#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "head/optics/gray_code.h"
#include "head/optics/patterns.h"
#include "head/optics/regions.h"

namespace fringix::head {
namespace {

constexpr Size size{20, 10};

std::uint8_t levelAt(const Pattern& pattern, std::int32_t x, std::int32_t y) {
  const Colour& colour = pattern.row(y)[x];
  EXPECT_EQ(colour, grey(colour.red));
  return colour.red;
}

TEST(GrayCodeTest, NeighboursDifferInOneBit) {
  for (std::uint32_t number = 0; number < 70000; ++number) ASSERT_EQ(std::popcount(grayCode(number) ^ grayCode(number + 1)), 1) << number;
}

TEST(GrayCodeTest, CanBeUndone) {
  for (std::uint32_t number = 0; number < 70000; ++number) ASSERT_EQ(fromGrayCode(grayCode(number)), number);
}

TEST(GrayCodeTest, PicturesOfTheBitsGiveTheNumbers) {
  Picture plainHigh{{4, 1}, {10, 10, 90, 90}};
  Picture invertedHigh{{4, 1}, {90, 90, 10, 10}};
  Picture plainLow{{4, 1}, {10, 90, 90, 50}};
  Picture invertedLow{{4, 1}, {90, 10, 10, 49}};
  const auto numbers = decodeGrayCode({{&plainHigh, &invertedHigh}, {&plainLow, &invertedLow}}, 5);
  EXPECT_EQ(numbers, (std::vector<std::uint16_t>{0, 1, 2, noCode})) << "the last pixel has too little contrast";
}

TEST(PatternTest, GrayCodeOfColumnsIsTheSameInAllRows) {
  const Pattern finest = makeGrayCode(size, Axis::columns, 0, false);
  for (std::int32_t y = 0; y < size.height; ++y) {
    for (std::int32_t x = 0; x < size.width; ++x) ASSERT_EQ(levelAt(finest, x, y), (x + 1) / 2 % 2 == 1 ? 255 : 0) << x << ", " << y;
  }
}

TEST(PatternTest, GrayCodeOfRowsInverted) {
  const Pattern pattern = makeGrayCode(size, Axis::rows, 1, true);
  for (std::int32_t y = 0; y < size.height; ++y) ASSERT_EQ(levelAt(pattern, 7, y), (y + 2) / 4 % 2 == 1 ? 0 : 255) << y;
}

TEST(PatternTest, GrayCodeBitsAboveTheSizeAreDark) {
  EXPECT_EQ(makeGrayCode(size, Axis::columns, 23, false).pixels, makeUniform(size, 0).pixels);
}

TEST(PatternTest, PhaseStepsMoveTheCosineByTheirShareOfThePeriod) {
  const Pattern first = makePhase(size, Axis::columns, 8, 0, 4);
  const Pattern second = makePhase(size, Axis::columns, 8, 1, 4);
  EXPECT_EQ(levelAt(first, 0, 0), 255);
  EXPECT_EQ(levelAt(first, 2, 0), 128);
  EXPECT_EQ(levelAt(first, 4, 0), 0);
  for (std::int32_t x = 2; x < size.width; ++x) EXPECT_EQ(levelAt(second, x, 0), levelAt(first, x - 2, 0)) << x;
}

TEST(PatternTest, PhaseStepsGiveThePositionBack) {
  constexpr std::uint32_t steps = 5;
  constexpr double period = 20;
  for (std::int32_t x = 0; x < size.width; ++x) {
    double sine = 0;
    double cosine = 0;
    for (std::uint32_t step = 0; step < steps; ++step) {
      const double level = levelAt(makePhase(size, Axis::columns, period, step, steps), x, 0);
      sine += level * std::sin(2 * 3.14159265358979 * step / steps);
      cosine += level * std::cos(2 * 3.14159265358979 * step / steps);
    }
    const double position = std::atan2(sine, cosine) / (2 * 3.14159265358979) * period;
    EXPECT_NEAR(std::remainder(position - x, period), 0, 0.02) << x;
  }
}

TEST(PatternTest, ProfilesFillColumnsOrRows) {
  const std::vector<Colour> profile{{1, 2, 3}, {4, 5, 6}};
  const Pattern columns = makeFromProfile({2, 2}, Axis::columns, profile);
  EXPECT_EQ(columns.pixels, (std::vector<Colour>{{1, 2, 3}, {4, 5, 6}, {1, 2, 3}, {4, 5, 6}}));
  const Pattern rows = makeFromProfile({2, 2}, Axis::rows, profile);
  EXPECT_EQ(rows.pixels, (std::vector<Colour>{{1, 2, 3}, {1, 2, 3}, {4, 5, 6}, {4, 5, 6}}));
}

TEST(PatternTest, CheckerboardBeginsBright) {
  const Pattern pattern = makeCheckerboard(size, 200, 5);
  EXPECT_EQ(levelAt(pattern, 0, 0), 200);
  EXPECT_EQ(levelAt(pattern, 5, 4), 0);
  EXPECT_EQ(levelAt(pattern, 5, 5), 200);
}

TEST(PatternTest, RampsGoFromBlackToTheLevel) {
  const Pattern columns = makeRamp(size, Axis::columns, 190);
  EXPECT_EQ(levelAt(columns, 0, 5), 0);
  EXPECT_EQ(levelAt(columns, 1, 5), 10);
  EXPECT_EQ(levelAt(columns, 19, 5), 190);
  EXPECT_EQ(levelAt(makeRamp({1, 1}, Axis::rows, 190), 0, 0), 0);
}

TEST(RegionTest, BoundsDoNotOverflow) {
  EXPECT_TRUE(liesWithin({5, 5, 15, 5}, size));
  EXPECT_FALSE(liesWithin({5, 5, 16, 5}, size));
  EXPECT_FALSE(liesWithin({0xFFFFFFFF, 0, 2, 1}, size));
  EXPECT_FALSE(liesWithin({0, 1, 1, 0xFFFFFFFF}, size));
}

TEST(RegionTest, CropTakesTheRectangle) {
  const Picture picture{{4, 3}, {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23}};
  Picture part;
  crop(picture, {1, 1, 2, 2}, part);
  EXPECT_EQ(part.size, (Size{2, 2}));
  EXPECT_EQ(part.pixels, (std::vector<std::uint8_t>{11, 12, 21, 22}));
}

TEST(RegionTest, ReduceTakesTheRoundedMeanOfEachCell) {
  const Picture picture{{5, 3}, {9, 0, 1, 2, 3, 9, 4, 4, 10, 10, 9, 255, 255, 1, 2}};
  Picture reduced;
  reduce(picture, {1, 0, 4, 2}, 2, reduced);
  EXPECT_EQ(reduced.size, (Size{2, 1}));
  EXPECT_EQ(reduced.pixels, (std::vector<std::uint8_t>{(0 + 1 + 4 + 4 + 2) / 4, (2 + 3 + 10 + 10 + 2) / 4}));
}

}  // namespace
}  // namespace fringix::head
