// What a user sees of the scan library: the shared object, its exports, and its headers from C and from C++.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "abi/binary_image.h"
#include "abi_user.h"
#include "fringix/scan.hpp"
#include "support/export_list.h"
#include "support/process_state.h"

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

struct Refusal {
  std::int32_t status;
  std::string text;
};

void expectRefusal(std::int32_t status, const Refusal& expected) {
  EXPECT_EQ(status, expected.status) << expected.text;
  EXPECT_EQ(SLScanErrorText(), expected.text);
}

const Refusal nullPointer{SLSCAN_BAD_PARAMETER, "a pointer is null"};

TEST(ScanRefusalTest, AThreadThatWasRefusedNothingHasNoText) {
  std::thread([] { EXPECT_STREQ(SLScanErrorText(), ""); }).join();
}

TEST(ScanSettingsTest, HaveTheseDefaults) {
  SLScanSettings s;
  ASSERT_EQ(SLScanSettingsDefaults(&s), SLSCAN_OKAY);
  EXPECT_EQ((std::vector{s.threads, s.saturation, s.clean, s.leastPatch}), (std::vector{1, 254, 1, 50}));
  EXPECT_EQ((std::vector{s.noise, s.noisePerLevel, s.periodShare, s.grayMargin, s.residual, s.unsteadiness}),
            (std::vector<double>{1, 0, 0.02, 4, 0.45, 0.05}));
  EXPECT_EQ((std::vector{s.sigma, s.nearest, s.farthest, s.edgeAngle, s.outlier}), (std::vector<double>{0.1, 0, 1e6, 80, 6}));
}

TEST(ScanRefusalTest, OfPlansAndCalibrations) {
  SLScanPlan plan = scan::defaultPlan(1280);
  SLScanPicture picture{};
  std::int32_t count = 0;
  std::vector<std::uint8_t> line(1280);
  expectRefusal(SLScanPlanDefaults(2, 1280, &plan), {SLSCAN_BAD_PARAMETER, "plan: method 2 is unknown"});
  expectRefusal(SLScanPlanDefaults(0, 1280, nullptr), nullPointer);
  expectRefusal(SLScanPlanPictureCount(nullptr, &count), nullPointer);
  expectRefusal(SLScanPlanPictureCount(&plan, nullptr), nullPointer);
  expectRefusal(SLScanPlanPicture(&plan, 0, nullptr), nullPointer);
  expectRefusal(SLScanPlanPicture(nullptr, 0, &picture), nullPointer);
  expectRefusal(SLScanPlanPicture(&plan, -1, &picture), {SLSCAN_BAD_PARAMETER, "plan: there is no picture -1 among 20"});
  expectRefusal(SLScanPlanPicture(&plan, 20, &picture), {SLSCAN_BAD_PARAMETER, "plan: there is no picture 20 among 20"});
  expectRefusal(SLScanPlanLine(&plan, 0, nullptr, 1280), nullPointer);
  expectRefusal(SLScanPlanLine(nullptr, 0, line.data(), 1280), nullPointer);
  expectRefusal(SLScanPlanLine(&plan, 0, line.data(), 1279), {SLSCAN_BAD_PARAMETER, "a line has 1280 bytes; room for 1279 was given"});

  SLScanCalibration head = simpleHead();
  const std::string text = scan::write(head);
  std::uint32_t length = 0;
  std::string room(text.size(), '.');
  expectRefusal(SLScanCalibrationRead(nullptr, 5, &head), nullPointer);
  expectRefusal(SLScanCalibrationRead(text.data(), 5, nullptr), nullPointer);
  expectRefusal(SLScanCalibrationWrite(nullptr, room.data(), 5, &length), nullPointer);
  expectRefusal(SLScanCalibrationWrite(&head, room.data(), 5, nullptr), nullPointer);
  expectRefusal(SLScanCalibrationWrite(&head, nullptr, 5, &length), nullPointer);
  const std::string size = std::to_string(text.size());
  expectRefusal(SLScanCalibrationWrite(&head, room.data(), static_cast<std::uint32_t>(text.size()), &length),
                {SLSCAN_BAD_PARAMETER, "the text has " + size + " bytes and a zero; room for " + size + " was given"});
  EXPECT_EQ(length, text.size());
  EXPECT_EQ(room, std::string(text.size(), '.')) << "nothing is written";
  for (const std::int32_t cameras : {0, 5}) {
    head.cameraCount = cameras;
    expectRefusal(SLScanCalibrationWrite(&head, room.data(), 5, &length),
                  {SLSCAN_BAD_CALIBRATION, "calibration: " + std::to_string(cameras) + " cameras; 1 to 4 are possible"});
  }
}

TEST(ScanRefusalTest, OfScanners) {
  const SLScanPlan plan = scan::defaultPlan(1280);
  const SLScanCalibration head = simpleHead();
  SLScanSettings settings;
  SLScanSettingsDefaults(&settings);
  expectRefusal(SLScanSettingsDefaults(nullptr), nullPointer);
  SLScanner* scanner = nullptr;
  expectRefusal(SLScannerAlloc(nullptr, &head, &settings, &scanner), nullPointer);
  expectRefusal(SLScannerAlloc(&plan, nullptr, &settings, &scanner), nullPointer);
  expectRefusal(SLScannerAlloc(&plan, &head, nullptr, &scanner), nullPointer);
  expectRefusal(SLScannerAlloc(&plan, &head, &settings, nullptr), nullPointer);
  settings.threads = -1;
  expectRefusal(SLScannerAlloc(&plan, &head, &settings, &scanner), {SLSCAN_BAD_PARAMETER, "settings: 1 to 256 threads are possible"});
  settings.threads = 1;
  ASSERT_EQ(SLScannerAlloc(&plan, &head, &settings, &scanner), SLSCAN_OKAY);

  const std::vector<std::uint8_t> picture(4000);
  std::vector<const std::uint8_t*> pictures(20, picture.data());
  std::vector<float> points(3 * 4000);
  SLScanCloud cloud = {};
  cloud.pixels = 4000;
  cloud.points = points.data();
  const Refusal noCamera{SLSCAN_BAD_PARAMETER, "there is no camera -1; the calibration has 1"};
  const Refusal wrongSize{SLSCAN_BAD_PICTURES, "pictures of 200 x 21 pixels; the camera has 200 x 20"};
  expectRefusal(SLScanCompute(nullptr, 0, pictures.data(), 20, 200, 20, &cloud, nullptr), nullPointer);
  expectRefusal(SLScanCompute(scanner, 0, nullptr, 20, 200, 20, &cloud, nullptr), nullPointer);
  expectRefusal(SLScanCompute(scanner, 0, pictures.data(), 20, 200, 20, nullptr, nullptr), nullPointer);
  expectRefusal(SLScanCompute(scanner, -1, pictures.data(), 20, 200, 20, &cloud, nullptr), noCamera);
  expectRefusal(SLScanCompute(scanner, 0, pictures.data(), 20, 200, 21, &cloud, nullptr), wrongSize);
  expectRefusal(SLScanCompute(scanner, 0, pictures.data(), -1, 200, 20, &cloud, nullptr),
                {SLSCAN_BAD_PICTURES, "0 pictures were given; the plan has 20"});
  expectRefusal(SLScanCompute(scanner, 0, pictures.data(), 20, 200, 20, &cloud, nullptr),
                {SLSCAN_BAD_PICTURES,
                 "no pixel gives a point; most of them have the reason noise. "
                 "Do the pictures show the plan's patterns, in its order?"});
  expectRefusal(SLScanAddPicture(nullptr, 0, picture.data(), 200, 20), nullPointer);
  expectRefusal(SLScanAddPicture(scanner, 0, nullptr, 200, 20), nullPointer);
  expectRefusal(SLScanAddPicture(scanner, 0, picture.data(), 200, 21), wrongSize);
  expectRefusal(SLScanAddPicture(scanner, -1, picture.data(), 200, 20), noCamera);
  expectRefusal(SLScanFinish(nullptr, 0, &cloud, nullptr), nullPointer);
  expectRefusal(SLScanFinish(scanner, 0, nullptr, nullptr), nullPointer);
  expectRefusal(SLScanFinish(scanner, -1, &cloud, nullptr), noCamera);
  expectRefusal(SLScanForget(nullptr, 0), nullPointer);
  expectRefusal(SLScanForget(scanner, -1), noCamera);
  expectRefusal(SLScanNextExposure(nullptr, 0), nullPointer);
  expectRefusal(SLScanNextExposure(scanner, -1), noCamera);
  expectRefusal(SLScanUseWindow(nullptr, 0, 0, 0, 16, 16), nullPointer);
  expectRefusal(SLScanUseWindow(scanner, -1, 0, 0, 16, 16), noCamera);
  cloud.pixels = 3999;
  expectRefusal(SLScanFinish(scanner, 0, &cloud, nullptr),
                {SLSCAN_BAD_PARAMETER, "the buffers have room for 3999 pixels; the camera has 4000"});
  SLScannerFree(scanner);
}

TEST(ScanRefusalTest, OfClouds) {
  std::vector<float> points = {1, 2, 3, 4, 5, 6};
  std::vector<float> to(6);
  std::vector<std::uint8_t> bytes(2);
  SLScanCloud cloud = {};
  cloud.pixels = 2;
  cloud.points = points.data();
  SLScanCloud gathered = cloud;
  gathered.points = to.data();
  std::uint64_t count = 7;
  expectRefusal(SLScanGather(nullptr, 1, &gathered, &count), nullPointer);
  expectRefusal(SLScanGather(&cloud, 1, nullptr, &count), nullPointer);
  expectRefusal(SLScanGather(&cloud, 1, &gathered, nullptr), nullPointer);
  gathered.pixels = 1;
  expectRefusal(SLScanGather(&cloud, 1, &gathered, &count), {SLSCAN_BAD_PARAMETER, "2 points; there is room for 1"});
  EXPECT_EQ(count, 2U);
  gathered.pixels = 2;
  const Refusal lacking{SLSCAN_BAD_PARAMETER, "a cloud lacks a buffer that is to be gathered"};
  for (float* SLScanCloud::*const buffer :
       {&SLScanCloud::normals, &SLScanCloud::sigma, &SLScanCloud::column, &SLScanCloud::modulation, &SLScanCloud::offset}) {
    gathered.*buffer = to.data();
    expectRefusal(SLScanGather(&cloud, 1, &gathered, &count), lacking);
    gathered.*buffer = nullptr;
  }
  for (std::uint8_t* SLScanCloud::*const buffer : {&SLScanCloud::intensity, &SLScanCloud::reason}) {
    gathered.*buffer = bytes.data();
    expectRefusal(SLScanGather(&cloud, 1, &gathered, &count), lacking);
    gathered.*buffer = nullptr;
  }
  EXPECT_EQ(SLScanGather(&cloud, 1, &gathered, &count), SLSCAN_OKAY);
  EXPECT_EQ(to, points);
  cloud.normals = cloud.sigma = cloud.column = cloud.modulation = cloud.offset = points.data();
  cloud.intensity = cloud.reason = bytes.data();
  gathered.reason = bytes.data();
  gathered.column = gathered.modulation = gathered.offset = to.data();
  EXPECT_EQ(SLScanGather(&cloud, 1, &gathered, &count), SLSCAN_OKAY) << "all that is asked for is there";
  cloud.points = nullptr;
  expectRefusal(SLScanGather(&cloud, 1, &gathered, &count), lacking);
}

TEST(ScanMemoryTest, IsGivenBackWithItsScanner) {
  const SLScanPlan plan = scan::defaultPlan(1280);
  const SLScanCalibration head = simpleHead();
  SLScanSettings settings;
  SLScanSettingsDefaults(&settings);
  const auto makeOne = [&] {
    SLScanner* scanner = nullptr;
    ASSERT_EQ(SLScannerAlloc(&plan, &head, &settings, &scanner), SLSCAN_OKAY);
    const std::vector<std::uint8_t> picture(4000);
    EXPECT_EQ(SLScanAddPicture(scanner, 0, picture.data(), 200, 20), SLSCAN_OKAY);
    SLScannerFree(scanner);
  };
  makeOne();
  const std::size_t before = heapBytes();
  for (int i = 0; i < 200; ++i) makeOne();
  EXPECT_LT(heapBytes(), before + (std::size_t{1} << 20));
}

TEST(ScanFindingsTest, TellOfALightThatFlickersAndAThingThatMoves) {
  const SLScanPlan plan = scan::defaultPlan(1280);
  const scan::Scanner scanner(plan, simpleHead());
  const auto findingsAfter = [&](const std::function<void(std::vector<std::vector<std::uint8_t>>&)>& change) {
    auto pictures = picturesOfTheWall(plan);
    change(pictures);
    for (const auto& picture : pictures) scanner.add(0, picture.data(), 200, 20);
    return scanner.finish(0).findings;
  };
  const SLScanFindings still = findingsAfter([](auto&) {});
  EXPECT_EQ((std::vector{still.flickers, still.moves}), (std::vector{0, 0}));
  const SLScanFindings brighter = findingsAfter([](auto& pictures) {
    for (std::uint8_t& pixel : pictures[15]) pixel = static_cast<std::uint8_t>(pixel + 10);
  });
  EXPECT_EQ(brighter.flickers, 1);
  const SLScanFindings moved = findingsAfter([](auto& pictures) {
    for (std::size_t i = 15; i < 20; ++i) std::rotate(pictures[i].begin(), pictures[i].begin() + 1, pictures[i].begin() + 2000);
  });
  EXPECT_EQ(moved.moves, 1);
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
