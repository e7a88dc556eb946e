// A surface of triangles.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "head/geometry/vector.h"
#include "head/scene/surface_point.h"

namespace fringix::head {

using Triangle = std::array<std::uint32_t, 3>;  // numbers of its corners in the list of vertices

struct MeshData {
  std::vector<Vector> vertices;
  std::vector<Triangle> triangles;
};

class Mesh {
 public:
  Mesh(std::string name, MeshData data, double albedo);  // each number in `data.triangles` is one of a vertex
  ~Mesh();
  Mesh(const Mesh&) = delete;
  Mesh& operator=(const Mesh&) = delete;

  const std::string& name() const { return name_; }
  const MeshData& data() const { return data_; }

  std::optional<SurfacePoint> firstSurface(const Vector& origin, const Vector& direction) const;  // as Scene::firstSurface

 private:
  struct Tree;

  std::string name_;
  MeshData data_;
  double albedo_;
  std::unique_ptr<const Tree> tree_;
};

}  // namespace fringix::head
