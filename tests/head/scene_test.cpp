// The documented calibration against what the cameras see, by triangulation: the formulas here are the documentation's, not the head's.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "head/model/head_model.h"
#include "head/optics/gray_code.h"
#include "head/optics/patterns.h"

namespace fringix::head {
namespace {

constexpr Size camera{320, 256};
constexpr Size projector{1024, 640};
constexpr std::uint32_t bits = 10;

HeadSettings triangulating() {
  HeadSettings settings;
  settings.camera = camera;
  settings.projector = projector;
  settings.noise = 1;
  return settings;
}

// The projector column that lights each pixel, found as a user finds it.
std::vector<std::uint16_t> columnsSeenBy(HeadModel& model, std::uint32_t channel) {
  std::vector<Picture> pictures(2 * bits);
  std::vector<BitPictures> pairs;
  for (std::uint32_t i = 0; i < pictures.size(); ++i) {
    const std::uint32_t bit = bits - 1 - i / 2;
    model.show(std::make_shared<const Pattern>(makeGrayCode(projector, Axis::columns, bit, i % 2 == 1)));
    model.takePicture(channel, pictures[i]);
  }
  for (std::size_t i = 0; i < pictures.size(); i += 2) pairs.push_back({&pictures[i], &pictures[i + 1]});
  return decodeGrayCode(pairs, 10);
}

struct Point {
  double x, y, z;
};

// Where the ray of a camera pixel meets the plane of light of a projector column. The camera is at (side, 0, 0) and looks at
// (0, 0, 600); the projector is at the origin and looks along z.
Point triangulate(double pixelX, double pixelY, double column, double side) {
  const double angle = std::atan2(-side, 600.0);
  const double a = (pixelX - camera.width / 2.0) / (1.4 * camera.width);
  const double b = (pixelY - camera.height / 2.0) / (1.4 * camera.width);
  const Point ray{a * std::cos(angle) + std::sin(angle), b, std::cos(angle) - a * std::sin(angle)};
  const double slope = (column + 0.5 - projector.width / 2.0) / (1.2 * projector.width);  // x = slope * z in the plane of light
  const double distance = side / (slope * ray.z - ray.x);
  return {side + distance * ray.x, distance * ray.y, distance * ray.z};
}

// How far a point is from the nearest of the documented surfaces, in millimetres.
double distanceToScene(const Point& p) {
  const double wall = std::abs(p.z - 640 - 0.15 * p.x) / std::hypot(1, 0.15);
  const double ball = std::abs(std::hypot(p.x - 80, p.y - 10, p.z - 600) - 70);
  const bool beforeStep = p.x > -151 && p.x < -49 && std::abs(p.y) < 91;
  const double step = beforeStep ? std::abs(p.z - 585) : 1e9;
  return std::min({wall, ball, step});
}

class SceneTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(SceneTest, TriangulatedPointsLieOnTheSurfaces) {
  HeadModel model(triangulating());
  const auto columns = columnsSeenBy(model, GetParam());
  std::vector<double> errors;
  bool onBall = false;
  bool onStep = false;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] == noCode) continue;
    const double x = static_cast<double>(i % camera.width) + 0.5;
    const double y = static_cast<double>(i / camera.width) + 0.5;
    const Point point = triangulate(x, y, columns[i], GetParam() == 0 ? -160 : 160);
    errors.push_back(distanceToScene(point));
    onBall |= point.z < 550;
    onStep |= std::abs(point.z - 585) < 3 && point.x < -60;
  }
  ASSERT_GT(errors.size(), columns.size() / 2) << "most of the picture is lit";
  std::sort(errors.begin(), errors.end());
  EXPECT_LT(errors[errors.size() / 2], 0.6) << "half a projector column is about 0.7 mm of depth here";
  EXPECT_LT(errors[errors.size() * 95 / 100], 1.5);
  EXPECT_TRUE(onBall);
  EXPECT_TRUE(onStep);
}

INSTANTIATE_TEST_SUITE_P(Channels, SceneTest, testing::Values(0U, 1U));

}  // namespace
}  // namespace fringix::head
