#include "acceptance/position.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "acceptance/figures.h"
#include "acceptance/regions.h"

namespace fringix::tool {
namespace {

// Expected standard deviations of points: along the camera's rays, as a scan tells them, and of that the share which shows across the
// surface.
struct Sigmas {
  double along = 0;
  double across = 0;
};

Sigmas sigmasOf(const View& view, const Region& region, const std::vector<Place>& places, const auto& normalAt) {
  Sigmas squares;
  for (std::size_t i = 0; i < region.size(); ++i) {
    const Place ray = places[i] - view.camera;
    const double along = view.grid.sigma[region[i]];
    const double across = along * dot(ray, normalAt(places[i])) / length(ray);
    squares.along += along * along;
    squares.across += across * across;
  }
  const auto count = static_cast<double>(region.size());
  return {std::sqrt(squares.along / count), std::sqrt(squares.across / count)};
}

// The rectangle that holds all pixels of a region.
struct Frame {
  std::size_t left = std::numeric_limits<std::size_t>::max();
  std::size_t right = 0;
  std::size_t top = std::numeric_limits<std::size_t>::max();
  std::size_t bottom = 0;

  Frame(const Region& region, std::size_t width) {
    for (const std::size_t pixel : region) {
      left = std::min(left, pixel % width);
      right = std::max(right, pixel % width);
      top = std::min(top, pixel / width);
      bottom = std::max(bottom, pixel / width);
    }
  }
};

DeviationMap mapOf(const PointGrid& grid, const Region& region, const std::vector<double>& deviations) {
  const Frame frame(region, grid.width);
  DeviationMap map{static_cast<std::uint32_t>(frame.right - frame.left + 1), static_cast<std::uint32_t>(frame.bottom - frame.top + 1)};
  map.values.assign(std::size_t{map.width} * map.height, std::numeric_limits<float>::quiet_NaN());
  for (std::size_t i = 0; i < region.size(); ++i) {
    const std::size_t row = region[i] / grid.width - frame.top;
    map.values[row * map.width + region[i] % grid.width - frame.left] = static_cast<float>(deviations[i]);
  }
  return map;
}

SphereFigures addBall(Position& position, const View& view, const Region& region, double diameter) {
  const std::vector<Place> places = placesOf(view.grid, region);
  SphereFigures figures = measureSphere(places, diameter / 2);
  const auto normalAt = [&](const Place& place) { return (place - figures.sphere.centre) * (1 / figures.sphere.radius); };
  const Sigmas sigmas = sigmasOf(view, region, places, normalAt);
  position.points += region.size();
  position.readings.push_back({Figure::form, figures.form.whole, sigmas.along});
  position.readings.push_back({Figure::form95, figures.form.within95, sigmas.across});
  position.readings.push_back({Figure::size, 2 * figures.sphere.radius - diameter});
  return figures;
}

void measureBalls(Position& position, const View& view, const Certified& certified) {
  std::vector<SphereFigures> balls;
  Region all;
  std::vector<double> deviations;
  for (const Region& region : findBalls(view.grid, certified.diameter, kindOf(position.artefact).balls)) {
    balls.push_back(addBall(position, view, region, certified.diameter));
    all.insert(all.end(), region.begin(), region.end());
    deviations.insert(deviations.end(), balls.back().deviations.begin(), balls.back().deviations.end());
  }
  position.deviations = mapOf(view.grid, all, deviations);
  if (balls.size() < 2) return;
  const auto distance = [](const FittedSphere& a, const FittedSphere& b) { return length(a.centre - b.centre); };
  position.readings.push_back({Figure::spacing, distance(balls[0].sphere, balls[1].sphere) - certified.spacing});
  position.readings.push_back(
      {Figure::spacingOfCertified, distance(balls[0].ofCertifiedRadius, balls[1].ofCertifiedRadius) - certified.spacing});
}

void measurePlate(Position& position, const View& view) {
  const Region region = findPlate(view.grid);
  const std::vector<Place> places = placesOf(view.grid, region);
  const PlaneFigures figures = measurePlane(places);
  const Sigmas sigmas = sigmasOf(view, region, places, [&](const Place&) { return figures.plane.normal; });
  position.points = region.size();
  position.readings = {{Figure::flatness, figures.form.whole, sigmas.along}, {Figure::flatness95, figures.form.within95, sigmas.across}};
  position.deviations = mapOf(view.grid, region, figures.deviations);
}

}  // namespace

Position measurePosition(Artefact artefact, std::uint32_t number, const View& view, const Certified& certified) {
  Position position{artefact, number};
  artefact == Artefact::plane ? measurePlate(position, view) : measureBalls(position, view, certified);
  return position;
}

}  // namespace fringix::tool
