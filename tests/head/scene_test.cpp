// The scenes against what the head tells of them: every ray meets a surface of truth.json, and every artefact is in view.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <stdexcept>

#include "head/geometry/mount.h"
#include "head/scene/scenes.h"
#include "support/scratch_folder.h"
#include "told_geometry.h"

namespace fringix::head {
namespace {

std::vector<std::string> allScenes() {
  std::vector<std::string> names{"default", "stairs"};
  for (int i = 1; i <= 10; ++i) names.push_back("sphere:" + std::to_string(i));
  for (int i = 1; i <= 7; ++i) names.push_back("ballbar:" + std::to_string(i));
  for (int i = 1; i <= 6; ++i) names.push_back("plane:" + std::to_string(i));
  for (int i = 1; i <= 20; ++i) names.push_back("board:" + std::to_string(i));
  return names;
}

HeadSettings small(const std::string& scene) {
  HeadSettings settings;
  settings.camera = {160, 128};
  settings.projector = {160, 100};
  settings.scene = scene;
  settings.noise = 0;
  return settings;
}

struct Told {
  explicit Told(HeadModel& model) : calibration(blockOf(model, "calibration.json")), truth(blockOf(model, "truth.json")) {}

  test::Json calibration;
  Truth truth;
  ToldDevice camera{calibration, "/cameras/0"};
  ToldDevice other{calibration, "/cameras/1"};
  ToldDevice projector{calibration, "/projector"};
};

class SceneTest : public testing::TestWithParam<std::string> {};

TEST_P(SceneTest, EveryRayMeetsATrueSurface) {
  HeadModel model(small(GetParam()));
  const Told told(model);
  const auto scene = makeScene(GetParam());
  const Optics camera = cameraOptics({160, 128}, 0);
  std::size_t met = 0;
  for (int y = 0; y < 128; y += 3) {
    for (int x = 0; x < 160; x += 3) {
      const auto seen = scene->firstSurface(camera.position(), camera.directionThrough({1.0 * x, 1.0 * y}));
      if (!seen) continue;
      ++met;
      const Triple point = along({0, 0, 0}, told.camera.directionOf(x, y), seen->distance);
      EXPECT_LT(told.truth.distanceTo(point), 1e-7) << x << ", " << y;
    }
  }
  EXPECT_GT(met, 30U);
}

TEST_P(SceneTest, SpheresAndRectanglesAreInViewOfAllDevices) {
  HeadModel model(small(GetParam()));
  const Told told(model);
  for (const ToldDevice* device : {&told.camera, &told.other, &told.projector}) {
    for (const ToldSphere& sphere : told.truth.spheres) {
      for (int axis = 0; axis < 6; ++axis) {
        Triple edge = sphere.center;
        edge[static_cast<std::size_t>(axis / 2)] += axis % 2 == 0 ? sphere.radius : -sphere.radius;
        EXPECT_TRUE(device->shows(edge, 0)) << sphere.name;
      }
    }
    for (const ToldPlane& plane : told.truth.planes) {
      if (GetParam() == "default") continue;  // the step goes into the wall
      for (const Triple& corner : plane.corners) EXPECT_TRUE(device->shows(corner, 0)) << plane.name;
    }
  }
}

TEST_P(SceneTest, WhiteLightSaturatesNothing) {
  HeadModel model(small(GetParam()));
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
    Picture picture;
    ASSERT_TRUE(model.takePicture(channel, picture));
    int brightest = 0;
    for (std::size_t i = 13 * 160; i < picture.pixels.size(); ++i)
      brightest = std::max<int>(brightest, picture.pixels[i]);  // below the label
    EXPECT_GT(brightest, 120);
    EXPECT_LT(brightest, 250);
  }
}

INSTANTIATE_TEST_SUITE_P(All, SceneTest, testing::ValuesIn(allScenes()), [](const auto& test) {
  std::string name = test.param;
  std::replace(name.begin(), name.end(), ':', '_');
  return name;
});

TEST(TruthBlockTest, TheBarsLengthIsTrueAtEveryPlace) {
  for (int place = 1; place <= 7; ++place) {
    HeadModel model(small("ballbar:" + std::to_string(place)));
    const test::Json block = blockOf(model, "truth.json");
    const Truth truth(block);
    ASSERT_EQ(truth.spheres.size(), 2U);
    EXPECT_NEAR(lengthOf(minus(truth.spheres[0].center, truth.spheres[1].center)), block.at("/distances/0/value").number(), 1e-9);
    EXPECT_EQ(block.at("/distances/0/between/1").text(), truth.spheres[1].name);
  }
}

TEST(TruthBlockTest, TheStairsRiseAsTheySay) {
  HeadModel model(small("stairs"));
  const test::Json block = blockOf(model, "truth.json");
  const Truth truth(block);
  const auto planeNamed = [&](const std::string& name) {
    return *std::find_if(truth.planes.begin(), truth.planes.end(), [&](const ToldPlane& plane) { return plane.name == name; });
  };
  for (std::size_t i = 0; i < block.at("/distances").size(); ++i) {
    const test::Json distance = block.at("/distances/" + std::to_string(i));
    const ToldPlane from = planeNamed(distance.at("/between/0").text());
    const ToldPlane to = planeNamed(distance.at("/between/1").text());
    EXPECT_NEAR(product(from.normal, to.normal), 1, 1e-12) << "parallel";
    EXPECT_NEAR(std::abs(from.distance - to.distance), distance.at("/value").number(), 1e-9);
  }
}

TEST(TruthBlockTest, CornersLieInTheirPlaneAndNormalsPointAway) {
  HeadModel model(small("default"));
  bool unbounded = false;
  for (const ToldPlane& plane : Truth(blockOf(model, "truth.json")).planes) {
    EXPECT_NEAR(lengthOf(plane.normal), 1, 1e-12);
    EXPECT_GT(plane.distance, 0);
    for (const Triple& corner : plane.corners) EXPECT_NEAR(product(plane.normal, corner), plane.distance, 1e-9);
    unbounded |= plane.corners.empty();
  }
  EXPECT_TRUE(unbounded) << "the wall";
}

TEST(SceneNameTest, WhatThereIsNotIsRefusedWithWhatThereIs) {
  for (const char* name :
       {"", "ball", "ballbar:0", "ballbar:8", "ballbar:x", "ballbar:1x", "plane:7", "default:2", "sphere:11", "Default"}) {
    try {
      makeScene(name);
      ADD_FAILURE() << name;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find("ballbar:1 to ballbar:7"), std::string::npos) << error.what();
    }
  }
}

TEST(SceneChangeTest, ShowsAndTellsTheNewScene) {
  HeadModel model(small("ballbar:3"));
  HeadModel fresh(small("plane:2"));
  Picture before;
  Picture after;
  Picture expected;
  model.takePicture(0, before);
  model.setScene("plane:2");
  model.takePicture(0, after);
  fresh.takePicture(0, expected);
  fresh.takePicture(0, expected);
  EXPECT_NE(after.pixels, before.pixels);
  EXPECT_EQ(after.pixels, expected.pixels);
  EXPECT_EQ(blockOf(model, "truth.json"), blockOf(fresh, "truth.json"));
  EXPECT_THROW(model.setScene("nothing"), std::runtime_error);
  EXPECT_EQ(blockOf(model, "truth.json"), blockOf(fresh, "truth.json")) << "the old one stays";
}

Block textBlock(const std::string& text) { return {text.begin(), text.end()}; }

Block sceneBlock(HeadModel& model) {
  MemoryBudget enough(1000);
  return *model.data().load("scene.txt", enough).block;
}

TEST(SceneBlockTest, SavingANameChangesTheScene) {
  HeadModel model(small("ballbar:3"));
  HeadModel fresh(small("plane:2"));
  EXPECT_EQ(sceneBlock(model), textBlock("ballbar:3"));
  EXPECT_EQ(model.saveBlock("scene.txt", textBlock("plane:2\r\n")), Status::ok);
  EXPECT_EQ(sceneBlock(model), textBlock("plane:2"));
  EXPECT_EQ(blockOf(model, "truth.json"), blockOf(fresh, "truth.json"));
  model.setScene("stairs");
  EXPECT_EQ(sceneBlock(model), textBlock("stairs"));
}

TEST(SceneBlockTest, WhatIsNoSceneIsRefused) {
  HeadModel model(small("stairs"));
  for (const std::string& name : {std::string("nothing"), std::string(), std::string("plane:") + std::string(30, '0') + "1"})
    EXPECT_EQ(model.saveBlock("scene.txt", textBlock(name)), Status::badParameter) << name;
  EXPECT_EQ(sceneBlock(model), textBlock("stairs"));
}

TEST(SceneBlockTest, FilesAreOpenedForWhoStartedTheHeadOnly) {
  const test::ScratchFolder folder;
  const std::string triangle =
      "solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 9 0 0\nvertex 0 9 0\nendloop\nendfacet\nendsolid\n";
  const std::string own = (folder.path() / "own.stl").string();
  const std::string other = (folder.path() / "other.stl").string();
  for (const std::string& file : {own, other}) std::ofstream(file) << triangle;
  HeadModel model(small(own));
  EXPECT_EQ(model.saveBlock("scene.txt", textBlock("plane:2")), Status::ok);
  EXPECT_EQ(model.saveBlock("scene.txt", textBlock(other)), Status::badParameter);
  EXPECT_EQ(model.saveBlock("scene.txt", textBlock(own)), Status::ok);
}

TEST(SceneNameTest, ABoardHasDarkSquares) {
  const auto scene = makeScene("board");
  const Patch& board = scene->patches.front();
  const auto albedoAt = [&](double along, double across) {
    const Vector point = board.corner + board.along * along + board.across * across;
    return scene->firstSurface({0, 0, 0}, unit(point))->albedo;
  };
  EXPECT_GT(albedoAt(0.5 / 12, 0.5 / 9), 4 * albedoAt(1.5 / 12, 0.5 / 9));
  EXPECT_GT(albedoAt(1.5 / 12, 1.5 / 9), 4 * albedoAt(1.5 / 12, 0.5 / 9));
  EXPECT_NEAR(albedoAt(1.0 / 12, 0.5 / 9), 0.6 * albedoAt(0.5 / 12, 0.5 / 9), 1e-9) << "half dark at an edge";
  EXPECT_NEAR(albedoAt(1.0 / 12 + 0.3 / 240, 1.5 / 9), 0.873 * albedoAt(0.5 / 12, 0.5 / 9), 1e-3) << "an edge is soft";
  EXPECT_NEAR(albedoAt(1.0 / 12 - 1.5 / 240, 0.5 / 9), albedoAt(0.5 / 12, 0.5 / 9), 1e-5) << "but not wide";
  EXPECT_NEAR(length(board.along) / 12, 20, 1e-9);
  EXPECT_NEAR(length(board.across) / 9, 20, 1e-9);
}

}  // namespace
}  // namespace fringix::head
