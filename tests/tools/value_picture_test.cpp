// Numbers as colours, with a scale.
#include "pictures/value_picture.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <vector>

namespace fringix::tool {
namespace {

TEST(ValuePictureTest, ScaleStepsAreRound) {
  EXPECT_DOUBLE_EQ(roundStep(200, 14), 20);
  EXPECT_DOUBLE_EQ(roundStep(0.06, 10), 0.01);
  EXPECT_DOUBLE_EQ(roundStep(9, 10), 1);
  EXPECT_DOUBLE_EQ(roundStep(600, 65535), 0.01);
}

TEST(ValuePictureTest, ValuesHaveTheColoursOfTheScale) {
  const std::vector<float> values{400, 500, 600, std::numeric_limits<float>::quiet_NaN()};
  const png::Raster raster = drawValues({2, 2, values, 400, 600, "mm"});
  const auto at = [&](std::uint32_t x, std::uint32_t y) {
    return Colour{raster.pixel(x, y)[0], raster.pixel(x, y)[1], raster.pixel(x, y)[2]};
  };
  EXPECT_EQ(at(12, 12), evenColour(0));
  EXPECT_EQ(at(12, 13), evenColour(1));
  EXPECT_EQ(at(13, 13), (Colour{24, 24, 24}));
  const std::uint32_t bar = 2 + 2 * 12;
  EXPECT_EQ(at(bar, 12), evenColour(1)) << "the highest value stands at the top of the scale";
  EXPECT_EQ(at(bar, 12 + 119), evenColour(0));
}

TEST(ValuePictureTest, TheScaleIsLabelled) {
  const std::vector<float> values(4, 450);
  const png::Raster raster = drawValues({2, 2, values, 400, 600, "mm"});
  std::size_t ink = 0;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    for (std::uint32_t x = 2 + 24 + 24 + 6; x < raster.width; ++x) ink += raster.pixel(x, y)[0] > 128 ? 1U : 0U;
  }
  EXPECT_GT(ink, 100U);
}

TEST(ValuePictureTest, AnEmptyRangeIsDrawn) {
  const std::vector<float> values(4, 450);
  EXPECT_GT(drawValues({2, 2, values, 450, 450, "mm"}).width, 0U);
}

TEST(ValuePictureTest, OneValueAPixelIsNeeded) {
  const std::vector<float> values(3);
  EXPECT_THROW(drawValues({2, 2, values, 0, 1, "mm"}), std::invalid_argument);
}

}  // namespace
}  // namespace fringix::tool
