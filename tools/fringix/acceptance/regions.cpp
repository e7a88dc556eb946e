#include "acceptance/regions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "acceptance/connected.h"
#include "acceptance/fits.h"
#include "acceptance/votes.h"
#include "console/explain.h"

namespace fringix::tool {
namespace {

constexpr std::size_t leastPoints = 100;

Place placeAt(std::span<const float> numbers, std::size_t pixel) {
  return {numbers[3 * pixel], numbers[3 * pixel + 1], numbers[3 * pixel + 2]};
}

bool hasNormal(const PointGrid& grid, std::size_t pixel) { return grid.hasPoint(pixel) && std::isfinite(grid.normals[3 * pixel]); }

// Normals point towards the camera.
Place normalOf(const FittedSphere& sphere, const Place& place) { return (place - sphere.centre) * (1 / length(place - sphere.centre)); }
Place normalOf(const FittedPlane& plane, const Place&) { return plane.normal * -1; }

FittedSphere fitTo(const FittedSphere&, std::span<const Place> places) { return fitSphere(places); }
FittedPlane fitTo(const FittedPlane&, std::span<const Place> places) { return fitPlane(places); }

double typicalSigma(const PointGrid& grid) {
  std::vector<float> sigmas;
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (grid.hasPoint(i)) sigmas.push_back(grid.sigma[i]);
  }
  if (sigmas.empty()) return 0;
  const auto middle = sigmas.begin() + static_cast<std::ptrdiff_t>(sigmas.size() / 2);
  std::nth_element(sigmas.begin(), middle, sigmas.end());
  return *middle;
}

// How far from a shape points are taken for its own: wide enough for any error that is to be found, narrow enough for what stands beside.
double bandOf(const PointGrid& grid) { return std::max(1.0, 8 * typicalSigma(grid)); }

// The largest connected part of what lies within the band and does not face elsewhere: a stem or a bar touches a ball at an angle.
template <class Shape>
Region regionOf(const PointGrid& grid, const Shape& shape, double band) {
  constexpr double leastAgreement = 0.8;  // the cosine of 37 degrees
  std::vector<std::uint8_t> belongs(grid.pixels());
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (!grid.hasPoint(i)) continue;
    const Place place = placeAt(grid.points, i);
    if (std::abs(shape.deviation(place)) > band) continue;
    belongs[i] = !hasNormal(grid, i) || dot(placeAt(grid.normals, i), normalOf(shape, place)) >= leastAgreement ? 1 : 0;
  }
  return largestConnected(belongs, grid.width);
}

// Fits and takes what belongs to the fit, in turns. Empty when it comes to nothing.
template <class Shape>
Region settle(const PointGrid& grid, Shape shape, double firstBand) {
  constexpr int rounds = 5;
  const double band = bandOf(grid);
  Region region = regionOf(grid, shape, std::max(firstBand, band));
  for (int i = 0; i < rounds && region.size() >= leastPoints; ++i) {
    shape = fitTo(shape, placesOf(grid, region));
    region = regionOf(grid, shape, band);
  }
  return region.size() >= leastPoints ? region : Region{};
}

// Each point names the centre of the ball that it would belong to.
std::vector<Place> centresFrom(const PointGrid& grid, double radius, const std::vector<FittedSphere>& known) {
  std::vector<Place> centres;
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (!hasNormal(grid, i)) continue;
    const Place place = placeAt(grid.points, i);
    const auto isKnown = [&](const FittedSphere& ball) { return ball.deviation(place) < 0.2 * radius; };
    if (std::none_of(known.begin(), known.end(), isKnown)) centres.push_back(place - placeAt(grid.normals, i) * radius);
  }
  return centres;
}

// And the foot of the perpendicular from the camera to the plane that it would belong to.
std::vector<Place> feetFrom(const PointGrid& grid) {
  std::vector<Place> feet;
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (!hasNormal(grid, i)) continue;
    const Place normal = placeAt(grid.normals, i);
    feet.push_back(normal * dot(normal, placeAt(grid.points, i)));
  }
  return feet;
}

[[noreturn]] void failToFind(const std::string& what) {
  throw Failure(
      {what + " is not in view", "Look at a scan of it: it has to be matt, lit, whole in the picture, and of the size that was given."});
}

void requireSize(const FittedSphere& ball, double diameter) {
  constexpr double mostOff = 0.1;
  if (std::abs(2 * ball.radius - diameter) <= mostOff * diameter) return;
  failToFind(fmt::format("a ball of {} mm (the nearest thing to it measures {:.2f} mm)", diameter, 2 * ball.radius));
}

}  // namespace

std::vector<Region> findBalls(const PointGrid& grid, double diameter, std::size_t count) {
  const double radius = diameter / 2;
  std::vector<Region> regions;
  std::vector<FittedSphere> balls;
  while (regions.size() < count) {
    const std::vector<Place> centres = centresFrom(grid, radius, balls);
    Region region = centres.empty() ? Region{} : settle(grid, FittedSphere{mostNamed(centres, radius / 5), radius}, radius / 5);
    if (region.empty()) failToFind(fmt::format("ball {} of {}, of {} mm,", regions.size() + 1, count, diameter));
    balls.push_back(fitSphere(placesOf(grid, region)));
    requireSize(balls.back(), diameter);
    regions.push_back(std::move(region));
  }
  return regions;
}

Region findPlate(const PointGrid& grid) {
  const std::vector<Place> feet = feetFrom(grid);
  if (feet.empty()) failToFind("a plate");
  double sum = 0;
  for (const Place& foot : feet) sum += length(foot);
  const double distance = sum / static_cast<double>(feet.size());
  const Place foot = mostNamed(feet, distance / 50);
  Region region = settle(grid, FittedPlane{foot * (1 / length(foot)), length(foot)}, distance / 50);
  if (region.empty()) failToFind("a plate");
  return region;
}

std::vector<Place> placesOf(const PointGrid& grid, const Region& region) {
  std::vector<Place> places;
  places.reserve(region.size());
  for (const std::size_t pixel : region) places.push_back(placeAt(grid.points, pixel));
  return places;
}

}  // namespace fringix::tool
