// Lenses and poses: there and back, and against the documented formulas written anew.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "head/geometry/mount.h"
#include "told_geometry.h"

namespace fringix::head {
namespace {

constexpr Size cameraSize{1280, 1024};
constexpr Size projectorSize{1280, 800};

std::vector<Optics> allOptics() { return {cameraOptics(cameraSize, 0), cameraOptics(cameraSize, 1), projectorOptics(projectorSize)}; }

std::vector<ToldDevice> allTold(HeadModel& model) {
  const test::Json calibration = blockOf(model, "calibration.json");
  return {ToldDevice(calibration, "/cameras/0"), ToldDevice(calibration, "/cameras/1"), ToldDevice(calibration, "/projector")};
}

TEST(LensTest, DistortsByTheUsualFormula) {
  const Lens lens{2, 3, 10, 20, {0.1, 0.02, 0.003, 0.0004, 0.05}};
  const ImagePoint image = lens.imageOf({0.3, -0.4});  // r2 = 0.25
  const double radial = 1 + 0.1 * 0.25 + 0.02 * 0.0625 + 0.05 * 0.015625;
  EXPECT_NEAR(image.x, 10 + 2 * (0.3 * radial + 2 * 0.003 * 0.3 * -0.4 + 0.0004 * (0.25 + 2 * 0.09)), 1e-12);
  EXPECT_NEAR(image.y, 20 + 3 * (-0.4 * radial + 0.003 * (0.25 + 2 * 0.16) + 2 * 0.0004 * 0.3 * -0.4), 1e-12);
}

TEST(LensTest, DistortionRoundTrips) {
  for (const Optics& optics : allOptics()) {
    for (double y = -0.5; y < optics.size().height; y += 50.3) {
      for (double x = -0.5; x < optics.size().width; x += 50.3) {
        const ImagePoint back = optics.lens().imageOf(optics.lens().slopeThrough({x, y}));
        EXPECT_NEAR(back.x, x, 1e-9);
        EXPECT_NEAR(back.y, y, 1e-9);
      }
    }
  }
}

TEST(LensTest, LensesBendVisibly) {
  for (const Optics& optics : allOptics()) {
    Lens straight = optics.lens();
    straight.distortion = {};
    const Slope corner = optics.lens().slopeThrough({0, 0});
    EXPECT_GT(std::hypot(straight.imageOf(corner).x, straight.imageOf(corner).y), 5) << "pixels, in the corner";
  }
}

TEST(OpticsTest, ProjectsWhatLiesOnTheRayThroughAPixel) {
  std::mt19937 generator(5);
  std::uniform_real_distribution<> share(0, 1);
  for (const Optics& optics : allOptics()) {
    for (int i = 0; i < 200; ++i) {
      const ImagePoint place{share(generator) * (optics.size().width - 1), share(generator) * (optics.size().height - 1)};
      const auto image = optics.project(optics.position() + optics.directionThrough(place) * (300 + 500 * share(generator)));
      ASSERT_TRUE(image.has_value());
      EXPECT_NEAR(image->x, place.x, 1e-8);
      EXPECT_NEAR(image->y, place.y, 1e-8);
    }
  }
}

TEST(OpticsTest, NothingBehindOrFarOutsideIsInTheImage) {
  for (const Optics& optics : allOptics()) {
    const Vector axis = optics.directionThrough({optics.lens().cx, optics.lens().cy});
    EXPECT_TRUE(optics.project(optics.position() + axis * 500));
    EXPECT_FALSE(optics.project(optics.position() - axis * 500));
    for (double away = 400; away < 1e6; away *= 1.5)
      EXPECT_FALSE(optics.project(optics.position() + axis * 500 + Vector{0, away, 0})) << away;
  }
}

TEST(CalibrationBlockTest, TellsTheGeometryThatRenders) {
  HeadModel model({});
  const auto told = allTold(model);
  const auto optics = allOptics();
  std::mt19937 generator(6);
  std::uniform_real_distribution<> side(-100, 100);
  for (std::size_t device = 0; device < told.size(); ++device) {
    for (int i = 0; i < 100; ++i) {
      const Vector point = measuringVolume()({side(generator), side(generator), side(generator) * 0.7});
      const auto pixel = told[device].pixelOf({point.x, point.y, point.z});
      const auto image = optics[device].project(point);
      ASSERT_TRUE(image.has_value()) << "the measuring volume is seen by all";
      EXPECT_NEAR(pixel[0], image->x, 1e-8);
      EXPECT_NEAR(pixel[1], image->y, 1e-8);
    }
  }
}

TEST(CalibrationBlockTest, HasTheAgreedMembers) {
  HeadSettings settings;
  settings.serial = 77;
  settings.camera = {320, 256};
  HeadModel model(settings);
  const test::Json block = blockOf(model, "calibration.json");
  EXPECT_EQ(block.at("/format").text(), "fringix-calibration");
  EXPECT_EQ(block.at("/version").number(), 1);
  EXPECT_EQ(block.at("/unit").text(), "mm");
  EXPECT_EQ(block.at("/serial").number(), 77);
  EXPECT_EQ(block.at("/date").text().size(), 10U);
  EXPECT_EQ(block.at("/cameras").size(), 2U);
  EXPECT_EQ(block.at("/cameras/1/width").number(), 320);
  EXPECT_EQ(block.at("/projector/height").number(), 800);
}

TEST(CalibrationBlockTest, CameraZeroIsTheReferenceAndPosesAreRotations) {
  HeadModel model({});
  const auto told = allTold(model);
  for (const ToldDevice& device : told) {
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(product(device.rotation[i], device.rotation[i]), 1, 1e-12);
      EXPECT_NEAR(product(device.rotation[i], device.rotation[(i + 1) % 3]), 0, 1e-12);
    }
  }
  EXPECT_EQ(told[0].rotation[2], (Triple{0, 0, 1}));
  EXPECT_EQ(told[0].position, (Triple{0, 0, 0}));
  EXPECT_NEAR(lengthOf(told[2].position), 150, 0.1) << "the base";
}

TEST(CalibrationBlockTest, AClientsOwnOneTakesItsPlace) {
  HeadSettings settings;
  settings.dataMemory = 4;
  HeadModel model(settings);
  EXPECT_GT(model.data().load("calibration.json", model.transfers()).block->size(), 4U) << "what the head has by itself takes no room";
  EXPECT_EQ(model.data().save("calibration.json", {1, 2, 3, 4}), Status::ok);
  EXPECT_EQ(*model.data().load("calibration.json", model.transfers()).block, (Block{1, 2, 3, 4}));
}

}  // namespace
}  // namespace fringix::head
