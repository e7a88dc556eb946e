// Meshes as files: PLY and STL, as words and as bytes. The first byte chooses.
#include "head/scene/mesh_file.h"

#include <cmath>
#include <stdexcept>

#include "fuzz/input.h"
#include "fuzz/target.h"

namespace fringix::fuzz::mesh_target {

namespace {

void run(Bytes input) {
  Input in(input);
  const char* const ending = in.flag() ? ".ply" : ".stl";
  head::MeshData mesh;
  try {
    mesh = head::parseMesh(ending, textOf(in.all()));
  } catch (const std::runtime_error&) {
    return;
  }
  require(!mesh.triangles.empty(), "a mesh has triangles");
  for (const head::Triangle& triangle : mesh.triangles) {
    for (const std::uint32_t corner : triangle) require(corner < mesh.vertices.size(), "corners are vertices");
  }
  for (const head::Vector& vertex : mesh.vertices) require(std::isfinite(vertex.x + vertex.y + vertex.z), "vertices are finite");
  const head::Mesh surface("mesh", mesh, 0.5);
  surface.firstSurface({0, 0, 0}, {0, 0, 1});
}

const Registered target("mesh", run);

}  // namespace

}  // namespace fringix::fuzz::mesh_target
