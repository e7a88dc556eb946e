#include "head/scene/mesh_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "files/files.h"
#include "head/scene/ply_mesh.h"
#include "head/scene/stl_mesh.h"

namespace fringix::head {

namespace {

constexpr std::size_t mostTriangles = 5'000'000;
constexpr std::uint64_t largestFile = std::uint64_t{1} << 30;

std::string endingOf(const std::string& name) {
  std::string ending = std::filesystem::path(name).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending;
}

bool isFinite(const Vector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

void check(const MeshData& mesh) {
  if (mesh.triangles.empty()) throw std::runtime_error("it has no triangles");
  if (mesh.triangles.size() > mostTriangles) throw std::runtime_error("it has more than 5 million triangles");
  for (const Triangle& triangle : mesh.triangles) {
    for (const std::uint32_t corner : triangle) {
      if (corner >= mesh.vertices.size()) throw std::runtime_error("a triangle has a corner that is no vertex of the file");
    }
  }
  if (!std::all_of(mesh.vertices.begin(), mesh.vertices.end(), isFinite)) throw std::runtime_error("a vertex is not finite");
}

}  // namespace

bool isMeshFile(const std::string& name) { return endingOf(name) == ".ply" || endingOf(name) == ".stl"; }

MeshData parseMesh(const std::string& name, std::string_view content) {
  MeshData mesh = endingOf(name) == ".ply" ? parsePly(content) : parseStl(content);
  check(mesh);
  return mesh;
}

MeshData readMesh(const std::string& file) {
  const std::vector<std::uint8_t> bytes = files::readFile(file, largestFile);
  try {
    return parseMesh(file, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  } catch (const std::runtime_error& error) {
    throw std::runtime_error("no mesh can be read from \"" + file + "\": " + error.what());
  }
}

}  // namespace fringix::head
