#include "scanning/truth.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fringix::tool {
namespace {

const Place& cornerAfter(const TruePlane& plane, std::size_t i) { return plane.corners[(i + 1) % plane.corners.size()]; }

// For convex borders, whichever way around.
bool isInside(const TruePlane& plane, const Place& foot) {
  bool left = false;
  bool right = false;
  for (std::size_t i = 0; i < plane.corners.size(); ++i) {
    const double side = dot(cross(cornerAfter(plane, i) - plane.corners[i], foot - plane.corners[i]), plane.normal);
    (side < 0 ? right : left) = true;
  }
  return !(left && right);
}

double distanceToLine(const Place& from, const Place& to, const Place& point) {
  const Place way = to - from;
  const double share = std::clamp(dot(point - from, way) / std::max(dot(way, way), 1e-12), 0.0, 1.0);
  return length(point - (from + way * share));
}

double distanceToBorder(const TruePlane& plane, const Place& point) {
  double nearest = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < plane.corners.size(); ++i)
    nearest = std::min(nearest, distanceToLine(plane.corners[i], cornerAfter(plane, i), point));
  return nearest;
}

// `behind` is the distance to the plane as one without borders, which its own distance is no less than.
double errorOf(const TruePlane& plane, const Place& point, double behind) {
  if (plane.corners.empty() || isInside(plane, point - plane.normal * behind)) return behind;
  return std::copysign(distanceToBorder(plane, point), behind);
}

double errorOf(const TrueSphere& sphere, const Place& point) { return sphere.radius - length(point - sphere.centre); }

}  // namespace

double errorOf(const Truth& truth, const Place& point) {
  double nearest = std::numeric_limits<double>::infinity();
  const auto take = [&](double error) {
    if (std::abs(error) < std::abs(nearest)) nearest = error;
  };
  for (const TruePlane& plane : truth.planes) {
    const double behind = dot(plane.normal, point) - plane.distance;
    if (std::abs(behind) < std::abs(nearest)) take(errorOf(plane, point, behind));
  }
  for (const TrueSphere& sphere : truth.spheres) take(errorOf(sphere, point));
  return nearest;
}

ErrorFigures figuresOf(std::span<const float> errors, std::span<const float> sigmas) {
  constexpr float deviations = 5;
  if (errors.empty()) return {};
  double sum = 0;
  double squares = 0;
  std::size_t beyond = 0;
  std::vector<float> sizes;
  sizes.reserve(errors.size());
  for (std::size_t i = 0; i < errors.size(); ++i) {
    sum += errors[i];
    squares += double{errors[i]} * errors[i];
    sizes.push_back(std::abs(errors[i]));
    beyond += sizes[i] > deviations * sigmas[i] ? 1U : 0U;
  }
  const auto count = static_cast<double>(errors.size());
  const double largest = *std::max_element(sizes.begin(), sizes.end());
  return {std::sqrt(squares / count), quantile(std::move(sizes), 0.95), sum / count, largest, static_cast<double>(beyond) / count};
}

double quantile(std::vector<float> numbers, double share) {
  if (numbers.empty()) return 0;
  const auto place = numbers.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(numbers.size() - 1));
  std::nth_element(numbers.begin(), place, numbers.end());
  return *place;
}

}  // namespace fringix::tool
