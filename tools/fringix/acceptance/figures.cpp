#include "acceptance/figures.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace fringix::tool {
namespace {

template <class Shape>
std::vector<double> deviationsFrom(const Shape& shape, std::span<const Place> points) {
  std::vector<double> deviations;
  deviations.reserve(points.size());
  for (const Place& point : points) deviations.push_back(shape.deviation(point));
  return deviations;
}

// All points but those farthest from the shape, of which so many are left out that the rest is whole.
template <class Shape>
std::vector<Place> nearest(const Shape& shape, std::span<const Place> points) {
  std::vector<std::size_t> order(points.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::vector<double> deviations = deviationsFrom(shape, points);
  const auto dropped = static_cast<std::size_t>(shareDropped * static_cast<double>(points.size()));
  const auto end = order.end() - static_cast<std::ptrdiff_t>(dropped);
  std::nth_element(order.begin(), end, order.end(),
                   [&](std::size_t a, std::size_t b) { return std::abs(deviations[a]) < std::abs(deviations[b]); });
  std::vector<Place> kept;
  kept.reserve(points.size() - dropped);
  for (auto index = order.begin(); index != end; ++index) kept.push_back(points[*index]);
  return kept;
}

double thicknessOf(std::vector<double> deviations, double share) {
  std::sort(deviations.begin(), deviations.end());
  const auto within = static_cast<std::size_t>(std::ceil(share * static_cast<double>(deviations.size())));
  double thinnest = std::numeric_limits<double>::infinity();
  for (std::size_t first = 0; first + within <= deviations.size(); ++first)
    thinnest = std::min(thinnest, deviations[first + within - 1] - deviations[first]);
  return thinnest;
}

Form formOf(const std::vector<double>& all, const std::vector<double>& kept) {
  const auto [lowest, highest] = std::minmax_element(kept.begin(), kept.end());
  return {*highest - *lowest, thicknessOf(all, 0.95)};
}

}  // namespace

SphereFigures measureSphere(std::span<const Place> points, double certifiedRadius) {
  const std::vector<Place> kept = nearest(fitSphere(points), points);
  const FittedSphere sphere = fitSphere(kept);
  const std::vector<double> deviations = deviationsFrom(sphere, points);
  return {sphere, fitSphereOfRadius(kept, certifiedRadius), formOf(deviations, deviationsFrom(sphere, kept)), deviations};
}

PlaneFigures measurePlane(std::span<const Place> points) {
  const std::vector<Place> kept = nearest(fitPlane(points), points);
  const FittedPlane plane = fitPlane(kept);
  const std::vector<double> deviations = deviationsFrom(plane, points);
  return {plane, formOf(deviations, deviationsFrom(plane, kept)), deviations};
}

}  // namespace fringix::tool
