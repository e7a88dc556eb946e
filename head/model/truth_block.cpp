#include "head/model/truth_block.h"

#include <string>

#include "head/model/block_json.h"

namespace fringix::head {

namespace {

// The normal points away from the head.
Json toJson(const Patch& patch) {
  Vector normal = patch.normal();
  double distance = dot(normal, patch.corner);
  if (distance < 0) normal = normal * -1, distance = -distance;
  Json plane{{"name", patch.name}, {"normal", toJson(normal)}, {"distance", distance}};
  if (!patch.bounded) return plane;
  for (const Vector& corner : patch.corners()) plane["corners"].push_back(toJson(corner));
  return plane;
}

Json toJson(const Sphere& sphere) { return {{"name", sphere.name}, {"center", toJson(sphere.centre)}, {"radius", sphere.radius}}; }

Json toJson(const Distance& distance) { return {{"name", distance.name}, {"between", distance.between}, {"value", distance.value}}; }

Json toJson(const Mesh& mesh) {
  Json told{{"name", mesh.name()}, {"triangleCount", mesh.data().triangles.size()}};
  if (mesh.data().triangles.size() > mostTrianglesTold) return told;
  Json& vertices = told["vertices"] = Json::array();
  for (const Vector& vertex : mesh.data().vertices) vertices.push_back(toJson(vertex));
  told["triangles"] = mesh.data().triangles;
  return told;
}

template <class Things>
Json listOf(const Things& things) {
  Json list = Json::array();
  for (const auto& thing : things) list.push_back(toJson(thing));
  return list;
}

}  // namespace

Block truthBlock(const Scene& scene) {
  Json block{{"format", "fringix-truth"}, {"version", 1}, {"unit", "mm"}, {"frame", "camera 0"}};
  block["planes"] = listOf(scene.patches);
  block["spheres"] = listOf(scene.spheres);
  block["distances"] = listOf(scene.distances);
  block["meshes"] = Json::array();
  for (const auto& mesh : scene.meshes) block["meshes"].push_back(toJson(*mesh));
  const std::string text = block.dump() + "\n";
  return {text.begin(), text.end()};
}

}  // namespace fringix::head
