// What a user sees of the scan library: the shared object, its exports, and its headers from C and from C++.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "abi/binary_image.h"
#include "abi_user.h"
#include "fringix/scan.hpp"
#include "support/export_list.h"

namespace fringix::test {
namespace {

const std::vector<std::string> keptList = readExportList(SCAN_EXPORT_LIST);

TEST(ScanExportsTest, AreExactlyTheKeptList) {
  ASSERT_FALSE(keptList.empty());
  EXPECT_EQ(readBinaryImage(SCAN_LIBRARY_FILE).exports, keptList);
}

TEST(ScanExportsTest, AreAllCalledByTheCProgram) {
  std::ostringstream source;
  source << std::ifstream(SCAN_C_USER).rdbuf();
  for (const std::string& name : keptList) EXPECT_NE(source.str().find(name + "("), std::string::npos) << name;
}

TEST(ScanHeaderTest, ACProgramReachesEveryFunction) { EXPECT_EQ(abi_user_walk(), 0); }

TEST(ScanWrapperTest, ThrowsWithWhatWasWrong) {
  try {
    scan::defaultPlan(3);
    FAIL();
  } catch (const scan::Error& error) {
    EXPECT_EQ(error.code(), SLSCAN_BAD_PARAMETER);
    EXPECT_STREQ(error.what(), "plan: a projector of 3 columns; 16 to 16384 are possible");
  }
}

// A camera and a projector side by side that look at a white wall, rendered in the simplest way.
SLScanCalibration simpleHead() {
  SLScanCalibration head = {};
  head.serial = 5;
  std::copy_n("2024-01-01", 11, head.date);
  head.cameraCount = 1;
  head.cameras[0] = {200, 20, 400, 400, 100, 10, {}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {}};
  head.projector = {1280, 200, 1000, 1000, 640, 100, {}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {-100, 0, 0}};
  return head;
}

constexpr double wall = 500;

std::vector<std::vector<std::uint8_t>> picturesOfTheWall(const SLScanPlan& plan) {
  std::vector<std::vector<std::uint8_t>> pictures;
  for (std::int32_t i = 0; i < scan::pictureCount(plan); ++i) {
    const auto line = scan::line(plan, i);
    std::vector<std::uint8_t>& picture = pictures.emplace_back();
    for (int pixel = 0; pixel < 200 * 20; ++pixel) {
      const double x = (pixel % 200 - 100) / 400.0 * wall;
      const double column = 640 + 1000 * (x - 100) / wall;
      picture.push_back(static_cast<std::uint8_t>(line[static_cast<std::size_t>(column + 0.5)] * 0.8));
    }
  }
  return pictures;
}

TEST(ScanWrapperTest, MeasuresAWall) {
  const SLScanPlan plan = scan::defaultPlan(1280);
  const scan::Scanner scanner(plan, scan::readCalibration(scan::write(simpleHead())));
  const auto pictures = picturesOfTheWall(plan);
  std::vector<const std::uint8_t*> pointers;
  for (const auto& picture : pictures) pointers.push_back(picture.data());
  for (const auto& picture : pictures) scanner.add(0, picture.data(), 200, 20);
  std::vector<scan::Cloud> clouds = {scanner.compute(0, pointers), scanner.finish(0)};
  EXPECT_EQ(clouds[0].findings.counts[SLSCAN_POINT], 4000U);
  const scan::Cloud gathered = scan::gather(clouds);
  ASSERT_EQ(gathered.pixels(), 8000U);
  for (std::size_t i = 0; i < gathered.pixels(); ++i) {
    ASSERT_NEAR(gathered.points[3 * i + 2], wall, 1.5) << "a wall that is lit in whole columns is right to half a column";
    ASSERT_LT(gathered.normals[3 * i + 2], 0) << "towards the camera";
    ASSERT_GT(gathered.sigma[i], 0);
    ASSERT_EQ(gathered.intensity[i], 204);
  }
  EXPECT_THROW(scanner.compute(1, pointers), scan::Error);
}

}  // namespace
}  // namespace fringix::test
