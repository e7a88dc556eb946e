// What pictures tell of themselves, from numbers made by hand.
#include "scan/findings.h"

#include <gtest/gtest.h>

namespace fringix::scan {
namespace {

// As many pixels as are counted of a strip with this scatter.
void add(Scatter& scatter, float deviation, std::size_t times) {
  DecodedStrip decoded{};
  decoded.misfit.fill(deviation * deviation);
  for (std::size_t i = 0; i < times; ++i) scatter.add(decoded, 1);
}

TEST(ScatterTest, TheMedianLiesInTheBinThatHalfOfAllReach) {
  Scatter scatter;
  EXPECT_EQ(scatter.median(), 0) << "of nothing";
  add(scatter, 1, 10);
  const double one = scatter.median();
  EXPECT_NEAR(one, 1, 0.1);
  add(scatter, 5, 10);
  EXPECT_NEAR(scatter.median(), one, 0.1) << "not in the gap, and not behind it";
  add(scatter, 5, 1);
  EXPECT_NEAR(scatter.median(), 5, 0.1);
}

TEST(FlickerTest, IsTheLargestDeviationAsAShareOfTheLight) {
  EXPECT_NEAR(flickerOf(100, {1100, 1100, 1100}), 0, 1e-12);
  EXPECT_NEAR(flickerOf(100, {1070, 1100, 1130}), 0.03, 1e-12);
  EXPECT_NEAR(flickerOf(100, {1080, 1080, 1140}), 0.04, 1e-12);
  EXPECT_NEAR(flickerOf(100, {1060, 1120, 1120}), 0.04, 1e-12);
  EXPECT_EQ(flickerOf(100, {100, 100}), 0) << "no light";
}

}  // namespace
}  // namespace fringix::scan
