// How much points differ when a scan is repeated.
#include "scanning/repeatability.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "scanning/scan.h"

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

// What moves a point of another camera is noise along that camera's rays.
TEST(RepeatabilityTest, DistancesAreThoseFromTheCameraThatSawThePoint) {
  ScanResult result;
  result.task.channels = {0, 1};
  SLScanOptics& first = result.task.calibration.cameras[0];
  SLScanOptics& second = result.task.calibration.cameras[1];
  for (const std::size_t i : {0U, 4U, 8U}) first.rotation[i] = 1;
  const double quarterTurn[9] = {0, 0, -1, 0, 1, 0, 1, 0, 0};  // it stands at (300, 20, 0) and looks along x
  std::copy_n(quarterTurn, 9, second.rotation);
  second.translation[1] = -20;
  second.translation[2] = -300;
  result.decoded.cloud.points = {1, 2, 500, 303, 24, 500};
  EXPECT_EQ(seenFromCameras(result), (std::vector<float>{1, 2, 500, 3, 4, 500}));
}

}  // namespace
}  // namespace fringix::tool
