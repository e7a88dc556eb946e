// Pixels against an independent computation, from the head's own data blocks and the formulas of the documentation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "head/optics/patterns.h"
#include "told_geometry.h"

namespace fringix::head {
namespace {

constexpr Size camera{320, 256};
constexpr Size projector{1280, 800};
constexpr double period = 10;

HeadSettings noiseless(const std::string& scene) {
  HeadSettings settings;
  settings.camera = camera;
  settings.projector = projector;
  settings.scene = scene;
  settings.noise = 0;
  return settings;
}

Picture pictureOf(HeadModel& model, std::uint32_t channel, Pattern pattern) {
  model.show(std::make_shared<const Pattern>(std::move(pattern)));
  Picture picture;
  EXPECT_TRUE(model.takePicture(channel, picture));
  return picture;
}

// What a camera sees of the one plane of a scene.
class PlaneView {
 public:
  PlaneView(HeadModel& model, std::uint32_t channel)
      : defocus_(model.settings().defocus),
        calibration_(blockOf(model, "calibration.json")),
        camera_(calibration_, "/cameras/" + std::to_string(channel)),
        projector_(calibration_, "/projector"),
        plane_(Truth(blockOf(model, "truth.json")).planes.front()) {}

  // False for a pixel beside the plane, or near its border.
  bool look(int x, int y) {
    const Triple ray = camera_.directionOf(x, y);
    const double distance = (plane_.distance - product(plane_.normal, camera_.position)) / product(plane_.normal, ray);
    point_ = along(camera_.position, ray, distance);
    for (std::size_t i = 0; i < 4; ++i) {
      const Triple edge = minus(plane_.corners[(i + 1) % 4], plane_.corners[i]);
      const double share = product(edge, minus(point_, plane_.corners[i])) / product(edge, edge);
      if (share < 0.02 || share > 0.98) return false;
    }
    return true;
  }

  double column() const { return projector_.pixelOf(point_)[0]; }
  double row() const { return projector_.pixelOf(point_)[1]; }

  // Of full light, in grey levels.
  double returned() const {
    const Triple ray = minus(point_, projector_.position);
    const double distance = lengthOf(ray);
    return 255 * 0.62 * std::abs(product(ray, plane_.normal)) / distance * (500 / distance) * (500 / distance);
  }

  double blur() const {
    const double off = std::abs(1 / projector_.depthOf(point_) - 1.0 / 500) / (1.0 / 500 - 1.0 / 600);
    const double exact = std::hypot(0.6, defocus_ * off);
    return 0.6 * std::pow(1.12, std::round(std::log(exact / 0.6) / std::log(1.12)));
  }

 private:
  double defocus_;
  test::Json calibration_;
  ToldDevice camera_;
  ToldDevice projector_;
  ToldPlane plane_;
  Triple point_{};
};

// Squares of even light, blurred; levels are 0 to 1.
template <class Level>
double blurred(double place, double blur, Level level) {
  const auto edge = [&](double at) { return std::erf((place - at) / (blur * std::numbers::sqrt2)) / 2; };
  double sum = 0;
  for (int i = static_cast<int>(place) - 12; i < place + 12; ++i) sum += level(i) * (edge(i - 0.5) - edge(i + 0.5));
  return sum;
}

double phaseLevel(int column, int step) {
  return std::round(127.5 * (1 + std::cos(2 * std::numbers::pi * (column / period - step / 10.0)))) / 255;
}

class RenderingTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RenderingTest, EachPixelIsWhatTheFormulasSay) {
  for (const char* scene : {"plane:4", "plane:6"}) {
    HeadModel model(noiseless(scene));
    PlaneView view(model, GetParam());
    const Picture columns = pictureOf(model, GetParam(), makePhase(projector, Axis::columns, period, 3, 10));
    const Picture rows = pictureOf(model, GetParam(), makePhase(projector, Axis::rows, period, 3, 10));
    std::size_t seen = 0;
    for (int y = 20; y < camera.height; ++y) {
      for (int x = 0; x < camera.width; ++x) {
        if (!view.look(x, y)) continue;
        ++seen;
        const auto pixel = static_cast<std::size_t>(y * camera.width + x);
        const auto level = [](int i) { return phaseLevel(i, 3); };
        ASSERT_NEAR(columns.pixels[pixel], 10 + view.returned() * blurred(view.column(), view.blur(), level), 0.53) << x << ", " << y;
        ASSERT_NEAR(rows.pixels[pixel], 10 + view.returned() * blurred(view.row(), view.blur(), level), 0.53) << x << ", " << y;
      }
    }
    EXPECT_GT(seen, 20000U);
  }
}

// The phase of ten steps against the place that the geometry gives: by place between two columns, because that is what an error of
// the projector's model depends on, and over all.
TEST_P(RenderingTest, TheDecodedColumnHasNoSystematicError) {
  constexpr std::size_t steps = 10;
  constexpr std::size_t bins = 16;
  HeadModel model(noiseless("plane:5"));
  PlaneView view(model, GetParam());
  std::vector<Picture> pictures;
  for (std::uint32_t i = 0; i < steps; ++i)
    pictures.push_back(pictureOf(model, GetParam(), makePhase(projector, Axis::columns, period, i, steps)));
  std::array<double, bins> sums{};
  std::array<double, bins> counts{};
  double squares = 0;
  for (int y = 20; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      if (!view.look(x, y)) continue;
      double c = 0;
      double s = 0;
      for (std::size_t i = 0; i < steps; ++i) {
        const double value = pictures[i].pixels[static_cast<std::size_t>(y * camera.width + x)];
        c += value * std::cos(2 * std::numbers::pi * static_cast<double>(i) / steps);
        s += value * std::sin(2 * std::numbers::pi * static_cast<double>(i) / steps);
      }
      const double error = std::remainder(std::atan2(s, c) / (2 * std::numbers::pi) * period - view.column(), period);
      const auto bin = static_cast<std::size_t>((view.column() - std::floor(view.column())) * bins);
      sums[bin] += error, counts[bin] += 1, squares += error * error;
    }
  }
  double all = 0;
  double count = 0;
  for (std::size_t i = 0; i < bins; ++i) {
    EXPECT_LT(std::abs(sums[i] / counts[i]), 0.0015) << "columns; one is about 1.2 mm of depth";
    all += sums[i], count += counts[i];
  }
  EXPECT_LT(std::abs(all / count), 0.0003);
  EXPECT_LT(std::sqrt(squares / count), 0.005) << "most of it the rounding to whole grey levels";
  RecordProperty("rms", std::to_string(std::sqrt(squares / count)));
}

INSTANTIATE_TEST_SUITE_P(Channels, RenderingTest, testing::Values(0U, 1U));

std::size_t differing(const Picture& a, const Picture& b, int tolerance) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) count += std::abs(a.pixels[i] - b.pixels[i]) > tolerance ? 1U : 0U;
  return count;
}

TEST(LightKindTest, StripesAndTheSameStripesAsAnImageGiveTheSamePicture) {
  for (const Axis axis : {Axis::columns, Axis::rows}) {
    HeadModel model(noiseless("default"));
    const Pattern stripes = makePhase(projector, axis, 10, 1, 4);
    const Picture plain = pictureOf(model, 0, stripes);
    ASSERT_EQ(model.setMask(std::vector<std::uint8_t>(std::size_t{1280} * 800, 255)), Status::ok);
    const Picture masked = pictureOf(model, 0, stripes);
    EXPECT_EQ(differing(plain, masked, 1), 0U + differing(plain, masked, 20)) << "the label aside";
    EXPECT_LT(differing(plain, masked, 0), plain.pixels.size() / 200);
  }
}

TEST(LightKindTest, ASingleLitPixelIsSeenWhereItsRayEnds) {
  HeadSettings settings = noiseless("plane:1");
  settings.ambient = 1;
  HeadModel model(settings);
  Pattern dot(projector);
  for (std::int32_t y = 398; y < 403; ++y) std::fill(dot.row(y) + 638, dot.row(y) + 643, grey(255));
  const Picture picture = pictureOf(model, 0, dot);
  PlaneView view(model, 0);
  for (int y = 20; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      if (!view.look(x, y)) continue;
      const double light = blurred(view.column(), view.blur(), [](int i) { return i >= 638 && i < 643 ? 1.0 : 0.0; }) *
                           blurred(view.row(), view.blur(), [](int i) { return i >= 398 && i < 403 ? 1.0 : 0.0; });
      ASSERT_NEAR(picture.pixels[static_cast<std::size_t>(y * camera.width + x)], 1 + view.returned() * light, 0.6) << x << ", " << y;
    }
  }
}

}  // namespace
}  // namespace fringix::head
