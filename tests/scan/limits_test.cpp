// What the scan library takes at most and at least: the last value that is good, and the first one beyond with all that is told of it.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "refusal.h"
#include "rendering.h"
#include "scan/scanner.h"

namespace fringix::scan::test {
namespace {

// A head whose camera has 320 x 240 pixels, a focal length of 320 and no lens to speak of; the projector stands 150 mm beside it.
Calibration plainHead() {
  Calibration head = smallHead();
  head.cameras[0] = {320, 240, 320, 320, 160, 120, {}, identity, {}};
  head.projector.distortion = {};
  head.projector.rotation = identity;
  head.projector.translation = {-150, 0, 0};
  return head;
}

std::string told(const std::function<void(Calibration&)>& change) {
  Calibration head = plainHead();
  change(head);
  return refusal(Status::badCalibration, [&] { check(head); });
}

struct NumberLimit {
  std::function<void(Calibration&, double)> set;
  double good;
  double beyond;
  std::string text;  // behind "calibration: "
};

void expectLimits(const std::vector<NumberLimit>& limits) {
  for (const NumberLimit& limit : limits) {
    EXPECT_EQ(told([&](Calibration& head) { limit.set(head, limit.good); }), "") << limit.text;
    EXPECT_EQ(told([&](Calibration& head) { limit.set(head, limit.beyond); }), "calibration: " + limit.text);
  }
}

TEST(CalibrationLimitsTest, OfThePinhole) {
  const auto width = [](Calibration& head, double value) {
    head.cameras[0].width = static_cast<std::int32_t>(value);
    head.cameras[0].fx = head.cameras[0].fy = value;
    head.cameras[0].cx = value / 2;
  };
  const auto height = [](Calibration& head, double value) { head.cameras[0].height = static_cast<std::int32_t>(value); };
  const auto fx = [](Calibration& head, double value) { head.cameras[0].fx = value; };
  const auto fy = [](Calibration& head, double value) { head.cameras[0].fy = value; };
  const auto cx = [](Calibration& head, double value) { head.cameras[0].cx = value; };
  const auto cy = [](Calibration& head, double value) { head.cameras[0].cy = value; };
  const auto cyOfAHighPicture = [&](Calibration& head, double value) {
    height(head, 400);
    cy(head, value);
  };
  const std::string sizes = " pixels; 16 x 1 to 32768 x 32768 are possible";
  const std::string lengths = " pixels; from 0.1 to 100 times its width can be";
  const std::string outside = ", far outside of its picture";
  expectLimits({
      {width, 16, 15, "camera 0 has 15 x 240" + sizes},
      {width, 32768, 32769, "camera 0 has 32769 x 240" + sizes},
      {height, 1, 0, "camera 0 has 320 x 0" + sizes},
      {height, 32768, 32769, "camera 0 has 320 x 32769" + sizes},
      {fx, 32, 31.9, "camera 0 has focal lengths of 31.9 and 320" + lengths},
      {fx, 32000, 32001, "camera 0 has focal lengths of 32001 and 320" + lengths},
      {fy, 32, 31.9, "camera 0 has focal lengths of 320 and 31.9" + lengths},
      {fy, 32000, 32001, "camera 0 has focal lengths of 320 and 32001" + lengths},
      {cx, 1280, 1281, "camera 0 has its principal point at 1281, 120" + outside},
      {cx, -1280, -1281, "camera 0 has its principal point at -1281, 120" + outside},
      {cy, 1280, 1281, "camera 0 has its principal point at 160, 1281" + outside},
      {cy, -1280, -1281, "camera 0 has its principal point at 160, -1281" + outside},
      {cyOfAHighPicture, 1600, 1601, "camera 0 has its principal point at 160, 1601" + outside},
  });
}

TEST(CalibrationLimitsTest, OfThePlaces) {
  const std::string apart = "camera 0 and the projector are less than 1 mm apart across the columns. Is the unit mm?";
  const auto x = [](Calibration& head, double value) { head.projector.translation = {value, 0, 0}; };
  const auto z = [](Calibration& head, double value) { head.projector.translation = {0, 50, value}; };
  const auto across = [](Calibration& head, double value) { head.projector.rotation[2][2] += value; };
  expectLimits({
      {x, 1, 0.9, apart},
      {x, -1, -0.9, apart},
      {z, 1, 0.9, apart},
      {x, 1e5, 100001, "the projector stands 100001 mm away from camera 0; at most 100 m can be. Is the unit mm?"},
      {across, 4e-7, 7e-7, "the rotation of the projector is none: its rows are not orthonormal (rows 2 and 2 give 1)"},
      {across, -4e-7, -7e-7, "the rotation of the projector is none: its rows are not orthonormal (rows 2 and 2 give 0.999999)"},
  });
}

TEST(CalibrationLimitsTest, OfTheRest) {
  EXPECT_EQ(told([](Calibration& head) { head.cameras.resize(4, head.cameras[0]); }), "");
  EXPECT_EQ(told([](Calibration& head) { head.cameras.resize(5, head.cameras[0]); }), "calibration: 5 cameras; 1 to 4 are possible");
  EXPECT_EQ(told([](Calibration& head) { head.cameras.clear(); }), "calibration: 0 cameras; 1 to 4 are possible");
  EXPECT_EQ(told([](Calibration& head) { head.projector.cx = std::numeric_limits<double>::infinity(); }),
            "calibration: the projector has a value that is no finite number");
  EXPECT_EQ(told([](Calibration& head) { head.projector.rotation[1][1] = -1; }),
            "calibration: the pose of the projector is mirrored: the determinant of its rotation is -1");
  EXPECT_EQ(told([](Calibration& head) { head.cameras[0].distortion.k1 = -2; }),
            "calibration: the distortion of camera 0 folds its picture: it cannot be undone at 0, 0");
  const std::string reference = "calibration: camera 0 is the reference: its rotation has to be the identity and its translation 0";
  EXPECT_EQ(told([](Calibration& head) { head.cameras[0].rotation = turned(0, 0.1, 0); }), reference);
  EXPECT_EQ(told([](Calibration& head) { head.cameras[0].translation[1] = 1; }), reference);
  const auto dated = [](const char* date) { return told([&](Calibration& head) { head.date = date; }); };
  for (const char* good : {"2024-01-01", "2024-12-31"}) EXPECT_EQ(dated(good), "");
  for (const std::string bad :
       {"2024-00-01", "2024-13-01", "2024-01-00", "2024-01-32", "2024/01/01", "2024-01/01", "x024-01-01", "2024-01-0x"})
    EXPECT_EQ(dated(bad.c_str()), "calibration: the date \"" + bad + "\" is not of the form YYYY-MM-DD");
}

std::string told(const PlanSettings& settings) {
  return refusal(Status::badParameter, [&] { const Plan plan(settings); });
}

TEST(PlanLimitsTest, AreToldWhole) {
  const Method gray = Method::grayAndPhase;
  const Method three = Method::threeFrequencies;
  for (const PlanSettings& good : {PlanSettings{gray, 16, 16, 10}, PlanSettings{gray, 16384, 4, 64}, PlanSettings{gray, 1280, 1280, 3},
                                   PlanSettings{three, 1292, 21, 3}, PlanSettings{three, 16, 16, 64}}) {
    EXPECT_EQ(told(good), "") << good.projectorWidth;
  }
  EXPECT_EQ(Plan({three, 16, 16, 64}).pictures().size(), 194U) << "a head numbers up to 256";
  EXPECT_EQ(told({static_cast<Method>(2), 1280, 10, 10}), "plan: the method is unknown");
  EXPECT_EQ(told({gray, 15, 10, 10}), "plan: a projector of 15 columns; 16 to 16384 are possible");
  EXPECT_EQ(told({gray, 16385, 10, 10}), "plan: a projector of 16385 columns; 16 to 16384 are possible");
  EXPECT_EQ(told({gray, 1280, 10, 2}), "plan: 2 steps; 3 to 64 are possible");
  EXPECT_EQ(told({gray, 1280, 10, 65}), "plan: 65 steps; 3 to 64 are possible");
  EXPECT_EQ(told({gray, 1280, 3, 10}), "plan: a period of 3 columns; 4 to the projector's width are possible");
  EXPECT_EQ(told({gray, 1280, 1281, 10}), "plan: a period of 1281 columns; 4 to the projector's width are possible");
  EXPECT_EQ(
      told({three, 1293, 21, 6}),
      "plan: a period of 21 columns is too short for three frequencies: 64 of them have to cover the projector's width and a guard of 4 %");
  const Plan plan({gray, 1280, 10, 10});
  EXPECT_EQ(plan.line(19).size(), 1280U);
  EXPECT_EQ(refusal(Status::badParameter, [&] { plan.line(20); }), "plan: there is no picture 20, the last is 19");
}

struct SettingsLimit {
  std::function<void(ScanSettings&, double)> set;
  double good;
  double beyond;
  std::string text;  // behind "settings: "
};

std::string told(const std::function<void(ScanSettings&, double)>& set, double value) {
  ScanSettings settings;
  set(settings, value);
  return refusal(Status::badParameter,
                 [&] { const Scanner scanner(defaultSettings(Method::grayAndPhase, 1280), smallHead(32, 24), settings); });
}

void expectLimits(const std::vector<SettingsLimit>& limits) {
  for (const SettingsLimit& limit : limits) {
    EXPECT_EQ(told(limit.set, limit.good), "") << limit.text;
    EXPECT_EQ(told(limit.set, limit.beyond), "settings: " + limit.text) << limit.beyond;
  }
}

TEST(SettingsLimitsTest, OfDecoding) {
  const auto floor = [](ScanSettings& s, double value) { s.decode.noise.floor = value; };
  const auto perLevel = [](ScanSettings& s, double value) { s.decode.noise.variancePerLevel = value; };
  const auto saturation = [](ScanSettings& s, double value) { s.decode.saturation = static_cast<std::int32_t>(value); };
  const auto periodShare = [](ScanSettings& s, double value) { s.decode.periodShare = value; };
  const auto grayMargin = [](ScanSettings& s, double value) { s.decode.grayMargin = value; };
  const auto residual = [](ScanSettings& s, double value) { s.decode.residual = value; };
  const auto unsteadiness = [](ScanSettings& s, double value) { s.decode.unsteadiness = value; };
  const std::string noise = "the noise has to be 0 or more and below 256 grey levels";
  const std::string saturated = "the saturation level has to be 1 to 256 (never)";
  const double tiny = 1e-300;
  const double huge = 999999999;
  expectLimits({
      {floor, 0, -1e-9, noise},
      {floor, 255.9, 256, noise},
      {perLevel, 0, -1e-9, noise},
      {perLevel, 255.9, 256, noise},
      {saturation, 1, 0, saturated},
      {saturation, 256, 257, saturated},
      {periodShare, tiny, 0, "the limit of the phase's deviation has to be above 0"},
      {periodShare, huge, 1e9, "the limit of the phase's deviation has to be above 0"},
      {grayMargin, tiny, 0, "the margin of the Gray code has to be above 0"},
      {residual, tiny, 0, "the limit of the period's residual has to be above 0"},
      {unsteadiness, tiny, 0, "the limit of unsteadiness has to be above 0"},
  });
}

TEST(SettingsLimitsTest, OfPointsAndCleaning) {
  const auto threads = [](ScanSettings& s, double value) { s.threads = static_cast<std::size_t>(value); };
  const auto sigma = [](ScanSettings& s, double value) { s.triangulation.sigma = value; };
  const auto nearest = [](ScanSettings& s, double value) { s.triangulation.nearest = value; };
  const auto farthest = [](ScanSettings& s, double value) {
    s.triangulation.nearest = 100;
    s.triangulation.farthest = value;
  };
  const auto edgeAngle = [](ScanSettings& s, double value) { s.clean.edgeAngle = value; };
  const auto outlier = [](ScanSettings& s, double value) { s.clean.outlier = value; };
  const auto leastPatch = [](ScanSettings& s, double value) { s.clean.leastPatch = static_cast<std::int32_t>(value); };
  const std::string depths = "the nearest depth has to be 0 mm or more and below the farthest";
  const std::string angle = "the angle of edges has to be above 0 and at most 90 degrees";
  const std::string outliers = "the limit of outliers has to be 0 or more";
  expectLimits({
      {threads, 1, 0, "1 to 256 threads are possible"},
      {threads, 256, 257, "1 to 256 threads are possible"},
      {sigma, 1e-300, 0, "the largest sigma has to be above 0 mm"},
      {nearest, 0, -1e-9, depths},
      {farthest, 100.001, 100, depths},
      {edgeAngle, 1e-300, 0, angle},
      {edgeAngle, 90, 90.001, angle},
      {outlier, 0, -1e-9, outliers},
      {outlier, 999999, 1e6, outliers},
      {leastPatch, 0, -1, "the smallest patch has to be 0 or more points"},
  });
}

TEST(ScannerLimitsTest, AreToldWhole) {
  const PlanSettings plan = defaultSettings(Method::grayAndPhase, 1280);
  EXPECT_EQ(refusal(Status::badParameter, [] { const Scanner scanner(defaultSettings(Method::grayAndPhase, 640), smallHead(32, 24), {}); }),
            "the plan is for a projector of 640 columns, the calibration for one of 1280");
  Scanner scanner(plan, smallHead(32, 24), {});
  std::vector<float> points(3 * 32 * 24);
  Cloud cloud;
  cloud.points = points.data();
  const std::vector<std::uint8_t> picture(32 * 24);
  std::vector<const std::uint8_t*> pictures(19, picture.data());
  EXPECT_EQ(refusal(Status::badParameter, [&] { scanner.use(1, {}); }), "there is no camera 1; the calibration has 1");
  const Window beyond{1, 2, 32, 20};
  EXPECT_EQ(refusal(Status::badParameter, [&] { scanner.use(0, beyond); }),
            "a window of 32 x 20 pixels at 1, 2 does not lie within the camera's 32 x 24");
  EXPECT_EQ(refusal(Status::badPictures, [&] { scanner.compute(0, pictures, cloud); }), "19 pictures were given; the plan has 20");
  pictures.push_back(nullptr);
  EXPECT_EQ(refusal(Status::badPictures, [&] { scanner.compute(0, pictures, cloud); }), "picture 19 is missing");
  pictures.back() = picture.data();
  EXPECT_EQ(refusal(Status::badParameter, [&] { scanner.compute(0, pictures, {}); }), "the buffer of the points is null");
  EXPECT_EQ(refusal(Status::badPictures, [&] { scanner.finish(0, cloud); }), "picture 0 is missing; the plan has 20");
  for (int exposure = 0; exposure < 16; ++exposure) {
    if (exposure > 0) scanner.nextExposure(0);
    for (int i = 0; i < 19; ++i) scanner.add(0, picture.data());
    EXPECT_EQ(refusal(Status::badPictures, [&] { scanner.nextExposure(0); }), "picture 19 is missing; the plan has 20");
    scanner.add(0, picture.data());
  }
  EXPECT_EQ(refusal(Status::badPictures, [&] { scanner.nextExposure(0); }), "16 exposures are possible");
  EXPECT_EQ(refusal(Status::badPictures, [&] { scanner.add(0, picture.data()); }), "all 20 pictures of the plan are there already");
}

}  // namespace
}  // namespace fringix::scan::test
