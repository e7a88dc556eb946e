#include "png/raster.h"

#include <gtest/gtest.h>

namespace fringix::png {
namespace {

TEST(Raster, ReducedPixelsAreMeans) {
  const Raster raster{4, 2, 1, {0, 2, 100, 100, 4, 6, 100, 104}};
  EXPECT_EQ(reduced(raster, 2, 1).samples, (std::vector<std::uint8_t>{3, 101}));
  EXPECT_EQ(reduced({3, 1, 1, {10, 20, 40}}, 2, 1).samples, (std::vector<std::uint8_t>{10, 30})) << "shares that do not come out even";
}

TEST(Raster, GrayAsRgb) { EXPECT_EQ(toRgb({2, 1, 1, {1, 2}}).samples, (std::vector<std::uint8_t>{1, 1, 1, 2, 2, 2})); }

TEST(Raster, GrayPictureMayComeInColours) {
  EXPECT_EQ(toGray({2, 1, 3, {1, 1, 1, 2, 2, 2}}).value().samples, (std::vector<std::uint8_t>{1, 2}));
  EXPECT_EQ(toGray({2, 1, 1, {1, 2}}).value().samples, (std::vector<std::uint8_t>{1, 2}));
  EXPECT_FALSE(toGray({2, 1, 3, {1, 1, 1, 2, 2, 3}}));
}

}  // namespace
}  // namespace fringix::png
