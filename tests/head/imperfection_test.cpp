// What each imperfection does, measured; and that it comes again with the same seed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "head/geometry/mount.h"
#include "head/model/head_model.h"
#include "head/optics/passing_ball.h"
#include "head/optics/patterns.h"

namespace fringix::head {
namespace {

constexpr Size camera{320, 256};
constexpr Size projector{640, 400};
constexpr std::size_t belowLabel = std::size_t{20} * 320;

HeadSettings clean(const std::string& scene = "plane:1") {
  HeadSettings settings;
  settings.camera = camera;
  settings.projector = projector;
  settings.scene = scene;
  settings.noise = 0;
  return settings;
}

Picture take(HeadModel& model, std::uint32_t channel = 0) {
  Picture picture;
  EXPECT_TRUE(model.takePicture(channel, picture));
  return picture;
}

Picture take(HeadModel& model, Pattern pattern) {
  model.show(std::make_shared<const Pattern>(std::move(pattern)));
  return take(model);
}

int middleOf(const Picture& picture) { return picture.pixels[std::size_t{128} * 320 + 160]; }

std::size_t differing(const Picture& a, const Picture& b) {
  std::size_t count = 0;
  for (std::size_t i = belowLabel; i < a.pixels.size(); ++i) count += a.pixels[i] != b.pixels[i] ? 1U : 0U;
  return count;
}

// Half the distance from dark to bright of the stripes in the middle of the picture, in shares of white.
double modulation(HeadModel& model) {
  std::array<double, 2> sums{};
  for (std::uint32_t step = 0; step < 4; ++step) {
    const double level = middleOf(take(model, makePhase(projector, Axis::columns, 10, step, 4)));
    sums[0] += level * std::cos(std::numbers::pi / 2 * step);
    sums[1] += level * std::sin(std::numbers::pi / 2 * step);
  }
  return std::hypot(sums[0], sums[1]) / 2 / (middleOf(take(model, makeUniform(projector, 255))) - 10);
}

TEST(ImperfectionTest, GammaDarkensMiddleLevels) {
  HeadSettings settings = clean();
  settings.gamma = 2.2;
  HeadModel model(settings);
  const int white = middleOf(take(model, makeUniform(projector, 255))) - 10;
  for (const int level : {64, 128, 200})
    EXPECT_NEAR(middleOf(take(model, makeUniform(projector, static_cast<std::uint8_t>(level)))) - 10, white * std::pow(level / 255.0, 2.2),
                1)
        << level;
}

TEST(ImperfectionTest, DefocusBlursStripesWithTheDistance) {
  const auto ideal = [](double blur) {
    const double frequency = 1.0 / 10;
    const double square = std::sin(std::numbers::pi * frequency) / (std::numbers::pi * frequency);
    return 0.5 * square * std::exp(-2 * std::pow(std::numbers::pi * blur * frequency, 2));
  };
  HeadSettings settings = clean("plane:3");  // 60 mm behind the focus
  settings.defocus = 0;
  HeadModel sharp(settings);
  EXPECT_NEAR(modulation(sharp), ideal(0.6), 0.01);
  settings.defocus = 3;
  HeadModel blurred(settings);
  const double off = (1.0 / 500 - 1.0 / 560) / (1.0 / 500 - 1.0 / 600);
  EXPECT_NEAR(modulation(blurred), ideal(std::hypot(0.6, 3 * off)), 0.03);
  settings.scene = "plane:1";
  HeadModel inFocus(settings);
  EXPECT_NEAR(modulation(inFocus), ideal(0.6), 0.02);
}

TEST(ImperfectionTest, AmbientLightIsAddedToAll) {
  HeadSettings settings = clean();
  settings.ambient = 37;
  HeadModel model(settings);
  const Picture dark = take(model, makeUniform(projector, 0));
  EXPECT_EQ(std::count(dark.pixels.begin() + belowLabel, dark.pixels.end(), 37),
            static_cast<std::ptrdiff_t>(dark.pixels.size() - belowLabel));
}

// The variance of two pictures' difference, where the signal is within a range.
double varianceBetween(const Picture& a, const Picture& b, const Picture& signal, int low, int high) {
  double squares = 0;
  double count = 0;
  for (std::size_t i = belowLabel; i < a.pixels.size(); ++i) {
    if (signal.pixels[i] < low || signal.pixels[i] > high) continue;
    squares += std::pow(a.pixels[i] - b.pixels[i], 2), count += 1;
  }
  EXPECT_GT(count, 2000);
  return squares / count / 2 - 1.0 / 12;
}

TEST(ImperfectionTest, ShotNoiseGrowsWithTheLight) {
  HeadSettings settings = clean("default");
  HeadModel model(settings);
  const Picture signal = take(model);
  settings.noise = 1;
  settings.shotNoise = 0.05;
  HeadModel noisy(settings);
  const Picture first = take(noisy);
  const Picture second = take(noisy);
  for (const int level : {10, 110, 130}) {
    const double expected = 1 + 0.05 * level;
    EXPECT_NEAR(varianceBetween(first, second, signal, level - 10, level + 10), expected, 0.1 * expected) << level;
  }
}

TEST(ImperfectionTest, NoiseIsNormallyDistributedAndDiffersFromPictureToPicture) {
  HeadSettings settings = clean();
  settings.noise = 4;
  settings.ambient = 100;
  HeadModel model(settings);
  model.switchDmd(false);
  const Picture picture = take(model);
  const auto share = [&](double deviations) {
    const auto beyond = std::count_if(picture.pixels.begin() + belowLabel, picture.pixels.end(),
                                      [&](int level) { return std::abs(level - 100) > 4 * deviations; });
    return static_cast<double>(beyond) / static_cast<double>(picture.pixels.size() - belowLabel);
  };
  EXPECT_NEAR(share(1.125), 0.2606, 0.01);  // more than 4 levels: beyond 4.5
  EXPECT_NEAR(share(2.125), 0.0336, 0.004);
  EXPECT_NEAR(share(3.125), 0.00178, 0.0007);
  EXPECT_GT(differing(picture, take(model)), picture.pixels.size() * 8 / 10);
}

TEST(ImperfectionTest, WhatIsTooBrightStaysSoUnderNoise) {
  HeadSettings settings = clean();
  settings.noise = 5;
  HeadModel model(settings);
  model.controls().setGain(20);
  const Picture picture = take(model);
  EXPECT_EQ(
      std::count(picture.pixels.begin() + 320 * 120, picture.pixels.begin() + 320 * 121, 255),
      0 + std::count_if(picture.pixels.begin() + 320 * 120, picture.pixels.begin() + 320 * 121, [](int level) { return level > 200; }));
}

TEST(ImperfectionTest, AShinyPatchSaturatesAndTheRestIsAsBefore) {
  HeadSettings settings = clean("default");
  HeadModel dull(settings);
  settings.shine = 3;
  HeadModel shiny(settings);
  const Picture before = take(dull);
  const Picture after = take(shiny);
  std::size_t saturated = 0;
  for (std::size_t i = belowLabel; i < after.pixels.size(); ++i) {
    EXPECT_GE(after.pixels[i], before.pixels[i]);
    saturated += after.pixels[i] == 255 ? 1U : 0U;
  }
  EXPECT_GT(saturated, 100U);
  EXPECT_LT(differing(before, after), before.pixels.size() / 20);
}

TEST(ImperfectionTest, ABallPasses) {
  HeadSettings settings = clean("default");
  HeadModel still(settings);
  settings.motion = 5;
  HeadModel moving(settings);
  const Picture empty = take(still);
  const Picture first = take(moving);
  const Picture second = take(moving);
  EXPECT_GT(differing(empty, first), 200U);
  EXPECT_LT(differing(empty, first), 6000U) << "the ball and its shadow only";
  EXPECT_GT(differing(first, second), 50U);
  EXPECT_EQ(differing(empty, take(still)), 0U);
}

TEST(ImperfectionTest, ThePassingBallMovesByTheSetWayAndTurnsBeforeItLeaves) {
  HeadSettings settings = clean();
  settings.motion = 7;
  std::size_t turns = 0;
  for (std::uint64_t moment = 0; moment < 200; ++moment) {
    const Sphere now = passingBall(settings, moment);
    const double way = length(passingBall(settings, moment + 1).centre - now.centre);
    EXPECT_LT(way, 7 + 1e-9);
    turns += way < 7 - 1e-9 ? 1U : 0U;
    EXPECT_TRUE(cameraOptics(camera, 0).project(now.centre).has_value());
  }
  EXPECT_LE(turns, 200 * 7 / 200 + 1U);
}

TEST(ImperfectionTest, BothCamerasOfAMeasurementSeeTheBallAtTheSameMoment) {
  HeadSettings settings = clean("default");
  settings.motion = 20;
  HeadModel measuring(settings);
  HeadModel taking(settings);
  std::uint32_t id = 0;
  ASSERT_EQ(measuring.allocateSequence(1, id), Status::ok);
  measuring.putImage(id, 0, makeUniform(projector, 255));
  ASSERT_EQ(measuring.measureImage(id, 0), Status::ok);
  const SharedPicture second = measuring.storedPicture({1, 0});
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(differing(*second, take(taking, 1)), 0U) << "the first moment of another head";
}

TEST(ImperfectionTest, AllComesAgainWithTheSameSeed) {
  HeadSettings settings = clean("default");
  settings.noise = 1;
  settings.shotNoise = 0.02;
  settings.gamma = 1.1;
  settings.defocus = 1;
  settings.shine = 1;
  settings.motion = 3;
  HeadModel one(settings);
  HeadModel same(settings);
  settings.noiseSeed = 99;
  HeadModel other(settings);
  settings.noise = settings.shotNoise = 0;
  HeadModel quiet(settings);
  settings.noiseSeed = 1;
  HeadModel quietOne(settings);
  for (int i = 0; i < 3; ++i) {
    const Picture picture = take(one);
    EXPECT_EQ(picture.pixels, take(same).pixels);
    EXPECT_GT(differing(picture, take(other)), picture.pixels.size() / 2);
    EXPECT_GT(differing(take(quiet), take(quietOne)), 100U) << "the ball is elsewhere";
  }
}

}  // namespace
}  // namespace fringix::head
