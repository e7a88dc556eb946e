#include "head/scene/artefacts.h"

#include <array>

#include "head/geometry/mount.h"
#include "head/geometry/pose.h"

namespace fringix::head {

namespace {

constexpr double ballRadius = 25;
constexpr double ballDistance = 150;
constexpr double paint = 0.62;  // albedo of what is made for measuring

// All places are in the frame of the measuring volume, in millimetres and degrees.
struct BarPlace {
  Vector middle;
  Vector direction;
};

constexpr std::array<BarPlace, ballBarPlaces> barPlaces{{{{0, 0, 0}, {1, 0, 0}},
                                                         {{0, 0, 0}, {0, 1, 0}},
                                                         {{0, 0, 20}, {0.8, 0.6, 0}},
                                                         {{0, 0, -20}, {0.8, -0.6, 0}},
                                                         {{0, 40, -50}, {1, 0, 0}},
                                                         {{0, -30, 10}, {0.8, 0, 0.6}},
                                                         {{10, 0, 0}, {0, 0.8, -0.6}}}};

constexpr std::array<Vector, spherePlaces> sphereCentres{{{0, 0, 0},
                                                          {-85, -65, 0},
                                                          {85, -65, 0},
                                                          {85, 65, 0},
                                                          {-85, 65, 0},
                                                          {0, 0, -60},
                                                          {0, 0, 70},
                                                          {-60, 45, -50},
                                                          {60, -45, -50},
                                                          {-80, -60, 60}}};

struct PlatePlace {
  Vector middle;
  double aboutX;
  double aboutY;
};

constexpr std::array<PlatePlace, platePlaces> platePlacesOfVolume{
    {{{0, 0, 0}, 0, 0}, {{0, 0, -40}, 0, 0}, {{0, 0, 60}, 0, 0}, {{0, 0, 0}, 0, 20}, {{0, 0, 0}, 0, -20}, {{0, 0, 0}, 20, 0}}};

struct BoardPlace {
  Vector middle;
  double aboutX;
  double aboutY;
  double aboutZ;  // first of the turns
};

// The first are those of the plate. The others are what a calibration needs: steeper, turned in their own plane, and all over the volume.
constexpr std::array<BoardPlace, boardPlaces> boardPlacesOfVolume{
    {{{0, 0, 0}, 0, 0, 0},        {{0, 0, -40}, 0, 0, 0},       {{0, 0, 60}, 0, 0, 0},         {{0, 0, 0}, 0, 20, 0},
     {{0, 0, 0}, 0, -20, 0},      {{0, 0, 0}, 20, 0, 0},        {{0, 0, 30}, 35, 0, 8},        {{0, 0, 30}, -35, 0, -8},
     {{0, 0, 20}, 0, 38, 6},      {{0, 0, 20}, 0, -38, -6},     {{-20, -15, 50}, 25, 25, -20}, {{20, 15, 50}, -25, -25, -20},
     {{20, -5, 40}, 25, -25, 20}, {{-20, 15, 40}, -25, 25, 20}, {{0, 0, 10}, 10, -15, 90},     {{0, 0, -20}, -15, 10, 12},
     {{50, 42, 30}, 12, -12, 0},  {{-50, 42, 30}, 12, 12, 0},   {{-50, -42, 30}, -12, 12, 0},  {{50, -42, 30}, -12, -12, 0}}};

// A rectangle around the origin of `pose`, in the pose's x-y plane.
Patch rectangle(const std::string& name, const Pose& pose, double width, double height) {
  const Vector along = pose.rotation * Vector{width, 0, 0};
  const Vector across = pose.rotation * Vector{0, height, 0};
  return {name, pose.translation - along * 0.5 - across * 0.5, along, across, paint};
}

Patch plateAt(const std::string& name, const Rotation& turn, const Vector& middle) {
  return rectangle(name, measuringVolume() * Pose{turn, middle}, 240, 180);
}

// The rectangle of three corners of the measuring volume.
Patch face(const std::string& name, const Vector& corner, const Vector& alongEnd, const Vector& acrossEnd, double albedo) {
  const Pose volume = measuringVolume();
  return {name, volume(corner), volume.rotation * (alongEnd - corner), volume.rotation * (acrossEnd - corner), albedo};
}

std::vector<Patch> box(const std::string& name, const Vector& low, const Vector& high, double albedo) {
  return {face(name + " front", {low.x, low.y, low.z}, {high.x, low.y, low.z}, {low.x, high.y, low.z}, albedo),
          face(name + " left", {low.x, low.y, low.z}, {low.x, high.y, low.z}, {low.x, low.y, high.z}, albedo),
          face(name + " right", {high.x, low.y, low.z}, {high.x, high.y, low.z}, {high.x, low.y, high.z}, albedo),
          face(name + " top", {low.x, low.y, low.z}, {high.x, low.y, low.z}, {low.x, low.y, high.z}, albedo),
          face(name + " bottom", {low.x, high.y, low.z}, {high.x, high.y, low.z}, {low.x, high.y, high.z}, albedo)};
}

std::string numbered(const std::string& name, int number) { return name + " " + std::to_string(number); }

}  // namespace

Scene ballBar(int place) {
  const auto& [middle, direction] = barPlaces.at(static_cast<std::size_t>(place - 1));
  const Pose volume = measuringVolume();
  const Vector half = direction * (ballDistance / 2);
  Scene scene;
  scene.spheres = {{"ball 1", volume(middle - half), ballRadius, paint}, {"ball 2", volume(middle + half), ballRadius, paint}};
  scene.distances = {{"bar", {"ball 1", "ball 2"}, ballDistance}};
  return scene;
}

Scene singleSphere(int place) {
  Scene scene;
  scene.spheres = {{"ball", measuringVolume()(sphereCentres.at(static_cast<std::size_t>(place - 1))), ballRadius, paint}};
  return scene;
}

Scene plate(int place) {
  Scene scene;
  const auto& [middle, aboutX, aboutY] = platePlacesOfVolume.at(static_cast<std::size_t>(place - 1));
  scene.patches = {plateAt("plate", turnAboutY(aboutY) * turnAboutX(aboutX), middle)};
  return scene;
}

Scene checkerboard(int place) {
  Scene scene;
  const auto& [middle, aboutX, aboutY, aboutZ] = boardPlacesOfVolume.at(static_cast<std::size_t>(place - 1));
  scene.patches = {plateAt("board", turnAboutY(aboutY) * turnAboutX(aboutX) * turnAboutZ(aboutZ), middle)};
  scene.patches.front().squaresAlong = 12;
  scene.patches.front().squaresAcross = 9;
  return scene;
}

Scene stairs() {
  constexpr int steps = 5;
  constexpr double left = -110;
  constexpr double right = 110;
  constexpr double height = 36;
  constexpr double rise = 12;
  Scene scene;
  for (int i = 0; i < steps; ++i) {
    const double top = (i - steps / 2.0) * height;
    const double z = (2 - i) * rise;
    scene.patches.push_back(face(numbered("step", i + 1), {left, top, z}, {right, top, z}, {left, top + height, z}, paint));
    if (i == 0) continue;
    scene.patches.push_back(face(numbered("riser", i), {left, top, z}, {right, top, z}, {left, top, z + rise}, paint));
    scene.distances.push_back({numbered("rise", i), {numbered("step", i), numbered("step", i + 1)}, rise});
  }
  scene.distances.push_back({"height", {"step 1", numbered("step", steps)}, (steps - 1) * rise});
  return scene;
}

Scene wallWithBallAndStep() {
  Scene scene;
  const Pose volume = measuringVolume();
  scene.patches = box("step", {-115, -70, -15}, {-40, 70, 80}, 0.6);
  scene.patches.push_back(face("wall", {0, 0, 45}, {100, 0, 60}, {0, 100, 45}, 0.8));
  scene.patches.back().bounded = false;
  scene.spheres = {{"ball", volume({55, 10, 0}), 50, 0.7}};
  return scene;
}

}  // namespace fringix::head
