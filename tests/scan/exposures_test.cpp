// Scenes that no single exposure shows whole.
#include <gtest/gtest.h>

#include <cmath>

#include "rendering.h"
#include "scan/exposures.h"
#include "scan/failure.h"
#include "scan/scanner.h"

namespace fringix::scan::test {
namespace {

using Pictures = std::vector<std::vector<std::uint8_t>>;

const PlanSettings gray = defaultSettings(Method::grayAndPhase, 1280);

struct Result {
  std::vector<float> points;
  std::vector<float> sigma;
  std::vector<std::uint8_t> intensity;
  std::vector<std::uint8_t> reason;
  Findings findings;

  Cloud room(std::size_t pixels) {
    points.resize(3 * pixels);
    sigma.resize(pixels);
    intensity.resize(pixels);
    reason.resize(pixels);
    Cloud cloud;
    cloud.points = points.data();
    cloud.sigma = sigma.data();
    cloud.intensity = intensity.data();
    cloud.reason = reason.data();
    return cloud;
  }
};

// A wall whose right half gives back 40 times as much light as its left half.
class TwoSurfaces {
 public:
  const Calibration head = smallHead();
  const Rendering wall{head, 0, plane({0.2, -0.1, 1}, 400)};
  Scanner scanner{gray, head, {}};

  Pictures exposed(double time, unsigned seed) const {
    Pictures pictures = wall.pictures(scanner.plan(), light(5 * time, seed));
    const Pictures bright = wall.pictures(scanner.plan(), light(200 * time, seed + 1));
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      for (std::size_t pixel = 0; pixel < wall.pixels(); ++pixel) {
        if (pixel % 320 >= 160) pictures[i][pixel] = bright[i][pixel];
      }
    }
    return pictures;
  }

  Result scan(const std::vector<Pictures>& exposures) {
    for (const Pictures& pictures : exposures) {
      if (&pictures != &exposures.front()) scanner.nextExposure(0);
      for (const auto& picture : pictures) scanner.add(0, picture.data());
    }
    Result result;
    result.findings = scanner.finish(0, result.room(wall.pixels()));
    return result;
  }

  std::size_t lit() const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < wall.pixels(); ++i) count += wall.truth(i).lit ? 1U : 0U;
    return count;
  }

  double shareBeyond(const Result& result, double deviations) const {
    double beyond = 0;
    for (std::size_t i = 0; i < wall.pixels(); ++i) {
      if (result.reason[i] != 0) continue;
      double square = 0;
      for (std::size_t axis = 0; axis < 3; ++axis)
        square += std::pow(static_cast<double>(result.points[3 * i + axis]) - wall.truth(i).point[axis], 2);
      beyond += std::sqrt(square) > deviations * static_cast<double>(result.sigma[i]) ? 1 : 0;
    }
    return beyond / static_cast<double>(result.findings.counts[0]);
  }

 private:
  static Light light(double strength, unsigned seed) { return {.dark = 5, .bright = 5 + strength, .noise = 1, .seed = seed}; }
};

TEST(ExposuresTest, MeasureTogetherWhatNoneMeasuresAlone) {
  TwoSurfaces scene;
  const Pictures usual = scene.exposed(1, 1);
  const Pictures longer = scene.exposed(16, 3);
  const auto lit = static_cast<double>(scene.lit());
  EXPECT_LT(static_cast<double>(scene.scan({usual}).findings.counts[0]), 0.6 * lit) << "too dark on the left";
  EXPECT_LT(static_cast<double>(scene.scan({longer}).findings.counts[0]), 0.6 * lit) << "too bright on the right";
  const Result both = scene.scan({usual, longer});
  EXPECT_GT(static_cast<double>(both.findings.counts[0]), 0.97 * lit);
  EXPECT_LT(scene.shareBeyond(both, 5), 0.001);
  EXPECT_FALSE(both.findings.moves);
}

TEST(ExposuresTest, TheirOrderMakesNoDifferenceButForTheGreyLevels) {
  TwoSurfaces scene;
  const Pictures usual = scene.exposed(1, 1);
  const Pictures longer = scene.exposed(16, 3);
  const Result one = scene.scan({usual, longer});
  const Result other = scene.scan({longer, usual});
  EXPECT_EQ(one.reason, other.reason);
  for (std::size_t i = 0; i < one.points.size(); ++i) {
    if (one.reason[i / 3] == 0) {
      ASSERT_EQ(one.points[i], other.points[i]) << i;
    }
  }
  EXPECT_EQ(one.intensity, usual[0]);
  EXPECT_EQ(other.intensity, longer[0]);
}

TEST(ExposuresTest, TheSameExposureAgainChangesNothing) {
  TwoSurfaces scene;
  const Pictures usual = scene.exposed(1, 1);
  const Result once = scene.scan({usual});
  const Result twice = scene.scan({usual, usual});
  EXPECT_EQ(once.findings.counts, twice.findings.counts);
  EXPECT_EQ(once.findings.expectedSigma, twice.findings.expectedSigma);
  EXPECT_EQ(once.findings.flicker, twice.findings.flicker);
}

TEST(ExposuresTest, WhatMovedBetweenThemGivesNoPoint) {
  TwoSurfaces scene;
  const Rendering moved(scene.head, 0, plane({0.2, -0.1, 1}, 403));
  const Result result = scene.scan({scene.exposed(1, 1), moved.pictures(scene.scanner.plan(), {.noise = 1, .seed = 9})});
  EXPECT_TRUE(result.findings.moves);
  EXPECT_GT(result.findings.counts[static_cast<std::size_t>(Reason::unsteady)], scene.wall.pixels() / 4);
}

TEST(ExposuresTest, ThePixelWithTheLeastVarianceIsKept) {
  DecodedStrip kept{};
  DecodedStrip other{};
  const auto put = [](DecodedStrip& strip, std::size_t pixel, Reason reason, float variance) {
    strip.reason[pixel] = static_cast<std::uint8_t>(reason);
    strip.variance[pixel] = variance;
    strip.column[pixel] = 100 + variance / 100;
  };
  put(kept, 0, Reason::none, 4), put(other, 0, Reason::none, 1);
  put(kept, 1, Reason::none, 1), put(other, 1, Reason::none, 4);
  put(kept, 2, Reason::none, 4), put(other, 2, Reason::saturation, 1);
  put(kept, 3, Reason::saturation, 1), put(other, 3, Reason::noise, 4);
  put(kept, 4, Reason::grayMargin, 1), put(other, 4, Reason::none, 4);
  takeBetter(other, kept);
  EXPECT_EQ(std::vector<float>(kept.variance.begin(), kept.variance.begin() + 5), (std::vector<float>{1, 1, 4, 4, 4}));
  EXPECT_EQ(kept.reason[3], static_cast<std::uint8_t>(Reason::noise));
  EXPECT_EQ(kept.reason[4], 0);
  EXPECT_EQ(kept.column[4], other.column[4]);
}

TEST(ExposuresTest, TheOneBeforeHasToBeComplete) {
  TwoSurfaces scene;
  const std::vector<std::uint8_t> picture(scene.wall.pixels(), 100);
  const auto complaint = [&](auto&& call) -> std::string {
    try {
      call();
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "";
  };
  const auto next = [&] { scene.scanner.nextExposure(0); };
  EXPECT_EQ(complaint(next), "picture 0 is missing; the plan has 20");
  for (int exposure = 0; exposure < 16; ++exposure) {
    if (exposure > 0) next();
    for (int i = 0; i < 20; ++i) scene.scanner.add(0, picture.data());
  }
  EXPECT_EQ(complaint(next), "16 exposures are possible");
}

}  // namespace
}  // namespace fringix::scan::test
