// Exact columns to points, and what is told of their deviation; and the lens.
#include <gtest/gtest.h>

#include <cmath>

#include "rendering.h"
#include "scan/triangulate.h"

namespace fringix::scan::test {
namespace {

TEST(LensTest, CanBeUndone) {
  const Distortion lens{-0.2, 0.08, 0.002, -0.003, 0.01};
  for (double x = -0.6; x <= 0.6; x += 0.05) {
    for (double y = -0.5; y <= 0.5; y += 0.05) {
      const Place shown = distort(lens, {x, y});
      const Place back = undistort(lens, shown, shown);
      ASSERT_NEAR(back.x, x, 1e-12);
      ASSERT_NEAR(back.y, y, 1e-12);
    }
  }
}

TEST(LensTest, ItsJacobianIsTheSlope) {
  const Distortion lens{-0.2, 0.08, 0.002, -0.003, 0.01};
  constexpr double step = 1e-6;
  const Place place{0.3, -0.2};
  const Jacobian slope = jacobian(lens, place);
  EXPECT_NEAR((distort(lens, {0.3 + step, -0.2}).x - distort(lens, {0.3 - step, -0.2}).x) / (2 * step), slope.xx, 1e-8);
  EXPECT_NEAR((distort(lens, {0.3, -0.2 + step}).x - distort(lens, {0.3, -0.2 - step}).x) / (2 * step), slope.xy, 1e-8);
  EXPECT_NEAR((distort(lens, {0.3 + step, -0.2}).y - distort(lens, {0.3 - step, -0.2}).y) / (2 * step), slope.xy, 1e-8);
  EXPECT_NEAR((distort(lens, {0.3, -0.2 + step}).y - distort(lens, {0.3, -0.2 - step}).y) / (2 * step), slope.yy, 1e-8);
}

struct Triangulated {
  DecodedStrip decoded;
  PointStrip points;
};

Triangulated triangulatedStrip(const Calibration& head, const Rendering& rendering, std::size_t strip, const TriangulationLimits& limits,
                               std::size_t camera = 0) {
  Triangulated result;
  result.decoded.reason.fill(0);
  result.decoded.variance.fill(1e-4F);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const std::size_t pixel = strip * stripLength + i;
    result.decoded.column[i] = pixel < rendering.pixels() ? static_cast<float>(rendering.truth(pixel).column) : 0;
  }
  Triangulator(head, camera, {0, 0, head.cameras[0].width, head.cameras[0].height}, limits, 1)
      .triangulate(strip, result.decoded, result.points);
  return result;
}

TEST(TriangulateTest, ARandomPlaneSeenByARandomHeadComesBack) {
  std::mt19937 chance(99);
  std::uniform_real_distribution<double> share(-1, 1);
  for (int round = 0; round < 30; ++round) {
    const Calibration head = randomHead(chance);
    const Rendering rendering(head, 0, plane({0.4 * share(chance), 0.4 * share(chance), 1}, 400 + 80 * share(chance)));
    int seen = 0;
    for (std::size_t strip = 0; strip < rendering.pixels() / stripLength; strip += 5) {
      const Triangulated result = triangulatedStrip(head, rendering, strip, {.sigma = 100});
      for (std::size_t i = 0; i < stripLength; ++i) {
        const Truth& truth = rendering.truth(strip * stripLength + i);
        if (!truth.lit) continue;
        ++seen;
        ASSERT_EQ(result.decoded.reason[i], 0);
        ASSERT_NEAR(static_cast<double>(result.points.x[i]), truth.point[0], 0.004);
        ASSERT_NEAR(static_cast<double>(result.points.y[i]), truth.point[1], 0.004);
        ASSERT_NEAR(static_cast<double>(result.points.z[i]), truth.point[2], 0.004);
        ASSERT_NEAR(static_cast<double>(result.points.sigma[i]), 0.01 * truth.alongRay, 2e-4 * truth.alongRay);
      }
    }
    ASSERT_GT(seen, 100) << round;
  }
}

TEST(TriangulateTest, PointsOfAnotherCameraAreOfTheReferenceFrame) {
  Calibration head = smallHead(96, 72);
  Optics& second = head.cameras.emplace_back(head.cameras[0]);
  second.rotation = turned(0.03, std::atan2(80, 400), 0.2);
  second.translation = second.rotation * Vector{-80, 5, 12};
  const Rendering rendering(head, 1, plane({0.2, -0.1, 1}, 400));
  int seen = 0;
  for (std::size_t pixel = 0; pixel < rendering.pixels(); ++pixel) {
    const Truth& truth = rendering.truth(pixel);
    if (!truth.lit || pixel % 37 != 0) continue;
    ++seen;
    const Triangulated result = triangulatedStrip(head, rendering, pixel / stripLength, {.sigma = 100}, 1);
    const std::size_t i = pixel % stripLength;
    EXPECT_NEAR(static_cast<double>(result.points.x[i]), truth.point[0], 0.004);
    EXPECT_NEAR(static_cast<double>(result.points.y[i]), truth.point[1], 0.004);
    EXPECT_NEAR(static_cast<double>(result.points.z[i]), truth.point[2], 0.004);
  }
  EXPECT_GT(seen, 50);
}

TEST(TriangulateTest, KeepsToTheLimits) {
  const Calibration head = smallHead(96, 72);
  const Rendering rendering(head, 0, plane({0, 0, 1}, 400));
  const std::size_t strip = 13;
  const std::size_t middle = 20;
  ASSERT_TRUE(rendering.truth(strip * stripLength + middle).lit);
  const auto reason = [&](const TriangulationLimits& limits) {
    const Triangulated result = triangulatedStrip(head, rendering, strip, limits);
    EXPECT_EQ(std::isnan(result.points.z[middle]), result.decoded.reason[middle] != 0);
    return static_cast<Reason>(result.decoded.reason[middle]);
  };
  EXPECT_EQ(reason({}), Reason::none);
  EXPECT_EQ(reason({.sigma = 0.001}), Reason::noise);
  EXPECT_EQ(reason({.nearest = 401}), Reason::geometry);
  EXPECT_EQ(reason({.farthest = 399}), Reason::geometry);
}

}  // namespace
}  // namespace fringix::scan::test
