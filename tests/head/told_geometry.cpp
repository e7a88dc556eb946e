#include "told_geometry.h"

#include <algorithm>
#include <cmath>

namespace fringix::head {

namespace {

using test::Json;

std::string entry(const std::string& place, std::size_t i) { return place + "/" + std::to_string(i); }

// How far a point of a rectangle's plane is outside of it.
double outside(const std::vector<Triple>& corners, const Triple& point) {
  double farthest = 0;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Triple inwards = minus(corners[(i + 2) % 4], corners[(i + 1) % 4]);  // the next edge is square to this one
    const double inside = product(inwards, minus(point, corners[i])) / lengthOf(inwards);
    farthest = std::max(farthest, -inside);
  }
  return farthest;
}

}  // namespace

double lengthOf(const Triple& a) { return std::sqrt(product(a, a)); }

Json blockOf(HeadModel& model, const std::string& name) {
  const SharedBlock block = model.data().load(name, model.transfers()).block;
  return Json(block == nullptr ? "" : std::string(block->begin(), block->end()));
}

Triple tripleAt(const Json& json, const std::string& place) {
  return {json.at(entry(place, 0)).number(), json.at(entry(place, 1)).number(), json.at(entry(place, 2)).number()};
}

ToldDevice::ToldDevice(const Json& calibration, const std::string& place) {
  const Json json = calibration.at(place);
  const auto number = [&](const char* name) { return json.at(name).number(); };
  width = number("/width"), height = number("/height");
  fx = number("/fx"), fy = number("/fy"), cx = number("/cx"), cy = number("/cy");
  for (std::size_t i = 0; i < 5; ++i) k[i] = json.at(entry("/distortion", i)).number();
  for (std::size_t i = 0; i < 3; ++i) rotation[i] = tripleAt(json, entry("/rotation", i));
  translation = tripleAt(json, "/translation");
  for (std::size_t i = 0; i < 3; ++i)
    position[i] = -(rotation[0][i] * translation[0] + rotation[1][i] * translation[1] + rotation[2][i] * translation[2]);
}

Triple ToldDevice::inDevice(const Triple& point) const {
  return {product(rotation[0], point) + translation[0], product(rotation[1], point) + translation[1],
          product(rotation[2], point) + translation[2]};
}

std::array<double, 2> ToldDevice::bend(double x, double y) const {
  const double r2 = x * x + y * y;
  const double factor = 1 + k[0] * r2 + k[1] * r2 * r2 + k[4] * r2 * r2 * r2;
  return {x * factor + 2 * k[2] * x * y + k[3] * (r2 + 2 * x * x), y * factor + k[2] * (r2 + 2 * y * y) + 2 * k[3] * x * y};
}

std::array<double, 2> ToldDevice::pixelOf(const Triple& point) const {
  const Triple p = inDevice(point);
  const auto bent = bend(p[0] / p[2], p[1] / p[2]);
  return {fx * bent[0] + cx, fy * bent[1] + cy};
}

// Newton's method, with a slope by differences.
Triple ToldDevice::directionOf(double column, double row) const {
  const double u = (column - cx) / fx;
  const double v = (row - cy) / fy;
  double x = u;
  double y = v;
  for (int i = 0; i < 20; ++i) {
    constexpr double h = 1e-6;
    const auto at = bend(x, y);
    const auto right = bend(x + h, y);
    const auto down = bend(x, y + h);
    const double a = (right[0] - at[0]) / h, b = (down[0] - at[0]) / h, c = (right[1] - at[1]) / h, d = (down[1] - at[1]) / h;
    const double du = u - at[0], dv = v - at[1];
    x += (d * du - b * dv) / (a * d - b * c);
    y += (a * dv - c * du) / (a * d - b * c);
  }
  Triple direction;
  for (std::size_t i = 0; i < 3; ++i)
    direction[i] = (rotation[0][i] * x + rotation[1][i] * y + rotation[2][i]) / std::sqrt(x * x + y * y + 1);
  return direction;
}

bool ToldDevice::shows(const Triple& point, double margin) const {
  const auto pixel = pixelOf(point);
  return pixel[0] > margin && pixel[1] > margin && pixel[0] < width - 1 - margin && pixel[1] < height - 1 - margin;
}

Truth::Truth(const Json& json) {
  for (std::size_t i = 0; i < json.at("/planes").size(); ++i) {
    const Json plane = json.at(entry("/planes", i));
    planes.push_back({plane.at("/name").text(), tripleAt(plane, "/normal"), plane.at("/distance").number(), {}});
    for (std::size_t k = 0; plane.has("/corners") && k < 4; ++k) planes.back().corners.push_back(tripleAt(plane, entry("/corners", k)));
  }
  for (std::size_t i = 0; i < json.at("/spheres").size(); ++i) {
    const Json sphere = json.at(entry("/spheres", i));
    spheres.push_back({sphere.at("/name").text(), tripleAt(sphere, "/center"), sphere.at("/radius").number()});
  }
}

double Truth::distanceTo(const Triple& point) const {
  double nearest = 1e9;
  for (const ToldPlane& plane : planes)
    nearest = std::min(nearest, std::hypot(product(plane.normal, point) - plane.distance, outside(plane.corners, point)));
  for (const ToldSphere& sphere : spheres) nearest = std::min(nearest, std::abs(lengthOf(minus(point, sphere.center)) - sphere.radius));
  return nearest;
}

}  // namespace fringix::head
