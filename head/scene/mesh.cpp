#include "head/scene/mesh.h"

#include <eigen3/unsupported/Eigen/BVH>
#include <limits>
#include <utility>

namespace fringix::head {

namespace {

using Point = Eigen::Vector3d;
using Box = Eigen::AlignedBox3d;

constexpr double infinity = std::numeric_limits<double>::infinity();

Point eigen(const Vector& v) { return {v.x, v.y, v.z}; }

struct Corners {
  Vector a, b, c;

  Vector normal() const { return unit(cross(b - a, c - a)); }
};

Box boxOf(const Corners& corners) {
  Box box(eigen(corners.a));
  return box.extend(eigen(corners.b)).extend(eigen(corners.c));
}

// Of a number that may be 0: then large, but not so large that 0 times it is no number.
double inverseOf(double number) { return number == 0 ? 1e300 : 1 / number; }

struct Ray {
  Vector origin;
  Vector direction;
  Point start = eigen(origin);
  Point inverse{inverseOf(direction.x), inverseOf(direction.y), inverseOf(direction.z)};
};

// Where a ray enters a box, infinity when it passes by. A ray along a face may count as one that meets the box.
double enters(const Ray& ray, const Box& box) {
  const Point low = (box.min() - ray.start).cwiseProduct(ray.inverse);
  const Point high = (box.max() - ray.start).cwiseProduct(ray.inverse);
  const double first = low.cwiseMin(high).maxCoeff();
  const double last = low.cwiseMax(high).minCoeff();
  if (first > last || last < 0) return infinity;
  return first;
}

// Where a ray meets a triangle, edges included; infinity when it passes by.
double meets(const Ray& ray, const Corners& corners) {
  const Vector ab = corners.b - corners.a;
  const Vector ac = corners.c - corners.a;
  const Vector side = cross(ray.direction, ac);
  const double volume = dot(ab, side);
  const Vector offset = ray.origin - corners.a;
  const double b = dot(offset, side) / volume;
  const Vector turned = cross(offset, ab);
  const double c = dot(ray.direction, turned) / volume;
  const double distance = dot(ac, turned) / volume;
  if (b >= 0 && c >= 0 && b + c <= 1 && distance >= nearestSurface) return distance;
  return infinity;
}

}  // namespace

// The nearest triangle on a ray, found by looking into the nearer box first and into none behind what was found.
struct Mesh::Tree {
  using Boxes = Eigen::KdBVH<double, 3, Corners>;
  Boxes boxes;

  struct Found {
    double distance = infinity;
    const Corners* corners = nullptr;
  };

  void lookInto(Boxes::Index box, const Ray& ray, Found& found) const {
    const int* child = nullptr;
    const int* lastChild = nullptr;
    const Corners* triangle = nullptr;
    const Corners* lastTriangle = nullptr;
    boxes.getChildren(box, child, lastChild, triangle, lastTriangle);
    for (; triangle != lastTriangle; ++triangle) {
      const double distance = meets(ray, *triangle);
      if (distance < found.distance) found = {distance, triangle};
    }
    if (child == lastChild) return;
    std::pair nearer{enters(ray, boxes.getVolume(child[0])), child[0]};
    std::pair farther{infinity, child[0]};
    if (lastChild - child == 2) farther = {enters(ray, boxes.getVolume(child[1])), child[1]};
    if (farther.first < nearer.first) std::swap(nearer, farther);
    if (nearer.first < found.distance) lookInto(nearer.second, ray, found);
    if (farther.first < found.distance) lookInto(farther.second, ray, found);
  }
};

Mesh::Mesh(std::string name, MeshData data, double albedo) : name_(std::move(name)), data_(std::move(data)), albedo_(albedo) {
  std::vector<Corners> triangles;
  std::vector<Box> boxes;
  for (const auto& [a, b, c] : data_.triangles) {
    triangles.push_back({data_.vertices[a], data_.vertices[b], data_.vertices[c]});
    boxes.push_back(boxOf(triangles.back()));
  }
  auto tree = std::make_unique<Tree>();
  tree->boxes.init(triangles.begin(), triangles.end(), boxes.begin(), boxes.end());
  tree_ = std::move(tree);
}

Mesh::~Mesh() = default;

std::optional<SurfacePoint> Mesh::firstSurface(const Vector& origin, const Vector& direction) const {
  Tree::Found found;
  tree_->lookInto(tree_->boxes.getRootIndex(), Ray{origin, direction}, found);
  if (found.corners == nullptr) return std::nullopt;
  return surfaceAt(found.distance, origin, direction, found.corners->normal(), albedo_);
}

}  // namespace fringix::head
