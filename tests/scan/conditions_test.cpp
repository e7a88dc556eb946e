// Pictures of a head that is not what the settings say: noisier, with a gamma, or with something that comes and goes.
#include <gtest/gtest.h>

#include <cmath>

#include "rendering.h"
#include "scan/scanner.h"

namespace fringix::scan::test {
namespace {

using Pictures = std::vector<std::vector<std::uint8_t>>;

const PlanSettings gray = defaultSettings(Method::grayAndPhase, 1280);
const Scene wall = plane({0.2, -0.1, 1}, 400);

class ConditionsTest : public testing::Test {
 protected:
  Findings scan(const Pictures& pictures, const ScanSettings& settings = {}) {
    Scanner scanner(gray, head, settings);
    Cloud cloud;
    cloud.points = points.data();
    cloud.sigma = sigma.data();
    cloud.reason = reason.data();
    return scanner.compute(0, pointersTo(pictures), cloud);
  }

  // Of the points: root mean square of the error in expected deviations.
  double relativeError() const {
    double squares = 0;
    double count = 0;
    for (std::size_t i = 0; i < rendering.pixels(); ++i) {
      if (reason[i] != 0) continue;
      double square = 0;
      for (std::size_t axis = 0; axis < 3; ++axis)
        square += std::pow(static_cast<double>(points[3 * i + axis]) - rendering.truth(i).point[axis], 2);
      squares += square / (static_cast<double>(sigma[i]) * static_cast<double>(sigma[i]));
      ++count;
    }
    return std::sqrt(squares / count);
  }

  const Calibration head = smallHead();
  const Plan plan{gray};
  const Rendering rendering{head, 0, wall};
  std::vector<float> points = std::vector<float>(3 * rendering.pixels());
  std::vector<float> sigma = std::vector<float>(rendering.pixels());
  std::vector<std::uint8_t> reason = std::vector<std::uint8_t>(rendering.pixels());
};

TEST_F(ConditionsTest, SigmaCountsWithTheNoiseThatIsThere) {
  ScanSettings settings;
  settings.triangulation.sigma = 1;
  for (const Light& light : {Light{.noise = 3}, Light{.noise = 1, .variancePerLevel = 0.02}}) {
    scan(rendering.pictures(plan, light), settings);
    EXPECT_NEAR(relativeError(), 1, 0.1) << light.noise;
  }
}

TEST_F(ConditionsTest, NoiseBelowWhatWasStatedChangesNothing) {
  ScanSettings settings;
  settings.decode.noise.floor = 2;
  scan(rendering.pictures(plan, {.noise = 1}), settings);
  EXPECT_NEAR(relativeError(), std::sqrt((1 + 1.0 / 12) / (4 + 1.0 / 12)), 0.05);
}

TEST_F(ConditionsTest, ThreeStepsLeaveNothingToTellNoiseBy) {
  const PlanSettings shortest{Method::grayAndPhase, 1280, 10, 3};
  const Plan threeSteps(shortest);
  Scanner scanner(shortest, head, {});
  Cloud cloud;
  cloud.points = points.data();
  cloud.sigma = sigma.data();
  cloud.reason = reason.data();
  const Findings findings = scanner.compute(0, pointersTo(rendering.pictures(threeSteps, {.noise = 1})), cloud);
  EXPECT_EQ(findings.measuredNoise, 0);
  EXPECT_GT(findings.counts[0], rendering.pixels() / 2);
  EXPECT_NEAR(relativeError(), 1, 0.3) << "by the noise that was stated";
}

// What is left of a gamma is its third harmonic, at most 1 % of the light.
TEST_F(ConditionsTest, AGammaIsNeitherNoiseNorMotion) {
  const std::uint64_t still = scan(rendering.pictures(plan, {.noise = 1})).counts[0];
  for (const double gamma : {1.1, 1.5, 2.2}) {
    const Findings findings = scan(rendering.pictures(plan, {.noise = 1, .gamma = gamma}));
    EXPECT_NEAR(findings.measuredNoise, 1.1, 0.15) << gamma;
    EXPECT_GT(static_cast<double>(findings.counts[0]), 0.98 * static_cast<double>(still)) << gamma;
    EXPECT_FALSE(findings.moves) << gamma;
    EXPECT_NEAR(relativeError(), 0.95, 0.1) << gamma;
  }
}

// The wall is nearer when the steps are taken: they fit their cosine, but not the code.
TEST_F(ConditionsTest, WhatCameBeforeTheStepsIsUnsteady) {
  Pictures pictures = rendering.pictures(plan, {.noise = 1});
  const Rendering later(head, 0, nearestOf(wall, sphere({0, 0, 350}, 30)));
  for (std::size_t i = 10; i < pictures.size(); ++i) pictures[i] = later.picture(plan, i, {.bright = 180, .noise = 1});
  for (std::size_t i = 10; i < pictures.size(); ++i) {
    const auto still = rendering.picture(plan, i, {.noise = 1});
    for (std::size_t pixel = 0; pixel < still.size(); ++pixel) {
      if (later.truth(pixel).point == rendering.truth(pixel).point && later.truth(pixel).lit) pictures[i][pixel] = still[pixel];
    }
  }
  const Findings findings = scan(pictures);
  EXPECT_TRUE(findings.moves);
  std::size_t changed = 0;
  for (std::size_t pixel = 0; pixel < rendering.pixels(); ++pixel) {
    if (later.truth(pixel).point == rendering.truth(pixel).point) continue;
    ++changed;
    ASSERT_NE(reason[pixel], 0) << pixel;
  }
  EXPECT_GT(changed, 500U);
}

}  // namespace
}  // namespace fringix::scan::test
