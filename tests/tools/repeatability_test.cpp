// How much points differ when a scan is repeated.
#include "scanning/repeatability.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace fringix::tool {
namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

TEST(RepeatabilityTest, IsTheDeviationOfAPixelsDistance) {
  Repeatability repeatability;
  for (const float z : {500.0F, 501.0F, 499.0F}) repeatability.add(std::vector<float>{0, 0, z});
  EXPECT_EQ(repeatability.scans(), 3U);
  EXPECT_NEAR(repeatability.deviation(), 1, 1e-5);
}

TEST(RepeatabilityTest, CountsPixelsThatAlwaysHaveAPoint) {
  Repeatability repeatability;
  repeatability.add(std::vector<float>{0, 0, 500, 0, 0, 100, none, none, none});
  repeatability.add(std::vector<float>{0, 0, 500, none, none, none, 0, 0, 300});
  repeatability.add(std::vector<float>{0, 0, 503, 0, 0, 900, 0, 0, 900});
  EXPECT_NEAR(repeatability.deviation(), std::sqrt(3.0), 1e-5);
}

TEST(RepeatabilityTest, OneScanTellsNothing) {
  Repeatability repeatability;
  repeatability.add(std::vector<float>{0, 0, 500});
  EXPECT_EQ(repeatability.deviation(), 0);
}

}  // namespace
}  // namespace fringix::tool
