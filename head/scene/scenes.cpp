#include "head/scene/scenes.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "head/geometry/mount.h"
#include "head/scene/artefacts.h"
#include "head/scene/mesh_file.h"

namespace fringix::head {

namespace {

struct NamedScene {
  std::string_view name;
  int places;
  Scene (*make)(int place);
};

constexpr NamedScene namedScenes[] = {
    {"default", 1, [](int) { return wallWithBallAndStep(); }},
    {"plane", platePlaces, plate},
    {"sphere", spherePlaces, singleSphere},
    {"ballbar", ballBarPlaces, ballBar},
    {"stairs", 1, [](int) { return stairs(); }},
    {"board", boardPlaces, checkerboard},
};

constexpr const char* scenesThatThereAre =
    "default, plane:1 to plane:6, sphere:1 to sphere:10, ballbar:1 to ballbar:7, stairs, board:1 to board:20, or a .ply or .stl file";

// Into the measuring volume: the middle of the mesh in the middle of the volume, x to the right, y up, z towards the head.
Pose placeFor(const MeshData& mesh) {
  Vector low = mesh.vertices.front();
  Vector high = low;
  for (const Vector& v : mesh.vertices) {
    low = {std::min(low.x, v.x), std::min(low.y, v.y), std::min(low.z, v.z)};
    high = {std::max(high.x, v.x), std::max(high.y, v.y), std::max(high.z, v.z)};
  }
  const Rotation turned{{1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
  return measuringVolume() * Pose{turned, turned * (low + high) * -0.5};
}

Scene meshScene(const std::string& file) {
  constexpr double albedo = 0.62;
  MeshData mesh = readMesh(file);
  const Pose place = placeFor(mesh);
  for (Vector& vertex : mesh.vertices) vertex = place(vertex);
  Scene scene;
  scene.meshes = {std::make_shared<const Mesh>("mesh", std::move(mesh), albedo)};
  return scene;
}

// Of the text behind the colon; 0 when it is no number.
int placeFrom(std::string_view text) {
  int place = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), place);
  return error == std::errc{} && end == text.data() + text.size() ? place : 0;
}

Scene namedScene(const std::string& name) {
  const std::size_t colon = name.find(':');
  const int place = colon == std::string::npos ? 1 : placeFrom(std::string_view(name).substr(colon + 1));
  for (const NamedScene& scene : namedScenes) {
    if (scene.name == name.substr(0, colon) && place >= 1 && place <= scene.places) return scene.make(place);
  }
  throw std::runtime_error("there is no scene \"" + name + "\": give " + scenesThatThereAre);
}

}  // namespace

std::shared_ptr<const Scene> makeScene(const std::string& name) {
  if (isMeshFile(name)) return std::make_shared<const Scene>(meshScene(name));
  static std::mutex mutex;
  static std::map<std::string, std::weak_ptr<const Scene>, std::less<>> scenes;
  const std::lock_guard lock(mutex);
  if (const auto found = scenes.find(name); found != scenes.end()) {
    if (auto scene = found->second.lock()) return scene;
  }
  auto scene = std::make_shared<const Scene>(namedScene(name));
  scenes[name] = scene;
  return scene;
}

}  // namespace fringix::head
