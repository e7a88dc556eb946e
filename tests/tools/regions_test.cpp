// Artefacts found among whatever else is in view.
#include "acceptance/regions.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <optional>
#include <random>

#include "acceptance/connected.h"
#include "acceptance/fits.h"
#include "acceptance/position.h"
#include "acceptance/votes.h"
#include "console/explain.h"

namespace fringix::tool {
namespace {

struct Hit {
  double distance = 0;
  Place normal{};
};

using Thing = std::function<std::optional<Hit>(const Place& ray)>;  // what a ray from the origin, of length 1, meets

Thing ball(const Place& centre, double radius) {
  return [=](const Place& ray) -> std::optional<Hit> {
    const double half = dot(ray, centre);
    const double rest = half * half - dot(centre, centre) + radius * radius;
    if (rest < 0) return std::nullopt;
    const double distance = half - std::sqrt(rest);
    return Hit{distance, (ray * distance - centre) * (1 / radius)};
  };
}

Thing plane(const Place& normalAway, double distance, double left = -1e9, double right = 1e9) {
  return [=](const Place& ray) -> std::optional<Hit> {
    const double way = distance / dot(ray, normalAway);
    if (way <= 0 || ray[0] * way < left || ray[0] * way > right) return std::nullopt;
    return Hit{way, normalAway * -1};
  };
}

// A round bar along x.
Thing bar(const Place& middle, double halfLength, double radius) {
  return [=](const Place& ray) -> std::optional<Hit> {
    const Place flatRay{0, ray[1], ray[2]};
    const Place flatMiddle{0, middle[1], middle[2]};
    const double a = dot(flatRay, flatRay);
    const double half = dot(flatRay, flatMiddle);
    const double rest = half * half - a * (dot(flatMiddle, flatMiddle) - radius * radius);
    if (rest < 0) return std::nullopt;
    const double distance = (half - std::sqrt(rest)) / a;
    if (std::abs(ray[0] * distance - middle[0]) > halfLength) return std::nullopt;
    return Hit{distance, (flatRay * distance - flatMiddle) * (1 / radius)};
  };
}

// A scan of things with some noise along the rays.
struct Scan {
  static constexpr std::uint32_t width = 240;
  static constexpr std::uint32_t height = 200;
  static constexpr double focalLength = 340;
  static constexpr float sigma = 0.01F;

  std::vector<float> points = std::vector<float>(std::size_t{3} * width * height, NAN);
  std::vector<float> normals = points;
  std::vector<float> sigmas = std::vector<float>(std::size_t{width} * height, sigma);
  std::vector<std::uint8_t> intensity = std::vector<std::uint8_t>(std::size_t{width} * height);

  explicit Scan(const std::vector<Thing>& things) {
    std::mt19937 generator(3);
    for (std::size_t i = 0; i < sigmas.size(); ++i) {
      Place ray{(static_cast<double>(i % width) - width / 2.0) / focalLength, (static_cast<double>(i / width) - height / 2.0) / focalLength,
                1};
      ray = ray * (1 / length(ray));
      std::optional<Hit> first;
      for (const Thing& thing : things) {
        if (const auto hit = thing(ray); hit && (!first || hit->distance < first->distance)) first = hit;
      }
      const double noise = (static_cast<double>(generator()) / 4294967296.0 - 0.5) * std::sqrt(12.0) * sigma;
      if (first) put(i, ray * (first->distance + noise), first->normal);
    }
  }

  void put(std::size_t pixel, const Place& place, const Place& normal) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      points[3 * pixel + axis] = static_cast<float>(place[axis]);
      normals[3 * pixel + axis] = static_cast<float>(normal[axis]);
    }
  }

  PointGrid grid() const { return {width, height, points, normals, sigmas, intensity}; }
};

std::string failureOf(const std::function<void()>& call) {
  try {
    call();
    return "none";
  } catch (const Failure& failure) {
    return failure.what();
  }
}

const Thing wall = plane({0, 0, 1}, 620);
const Place leftCentre{-75, 10, 500};
const Place rightCentre{75, 10, 500};
const std::vector<Thing> ballBar{ball(leftCentre, 25), ball(rightCentre, 25), bar({0, 10, 500}, 60, 8), wall};

TEST(RegionsTest, BothBallsOfABarBeforeAWall) {
  const Scan scan(ballBar);
  const std::vector<Region> regions = findBalls(scan.grid(), 50, 2);
  ASSERT_EQ(regions.size(), 2U);
  for (const Region& region : regions) {
    const FittedSphere sphere = fitSphere(placesOf(scan.grid(), region));
    EXPECT_GT(region.size(), 700U);
    EXPECT_NEAR(sphere.radius, 25, 0.02);
    EXPECT_LT(std::min(length(sphere.centre - leftCentre), length(sphere.centre - rightCentre)), 0.02);
  }
}

TEST(RegionsTest, TheBarIsNoPartOfItsBalls) {
  const Scan scan(ballBar);
  const Position position = measurePosition(Artefact::ballBar, 1, {scan.grid(), {}}, {50, 150, 0});
  for (const Reading& reading : position.readings) {
    const bool isForm = reading.figure == Figure::form || reading.figure == Figure::form95;
    EXPECT_LT(std::abs(reading.value), isForm ? 4 * Scan::sigma : 0.03F) << static_cast<int>(reading.figure);
  }
  EXPECT_EQ(position.readings.size(), 8U);
}

TEST(RegionsTest, ABallThatLiesOnATable) {
  const double slope = std::sqrt(0.5);
  const Scan scan({ball({10, 0, 480}, 20), plane({0, slope, slope}, (20 + 480 * slope))});
  const Region region = findBalls(scan.grid(), 40, 1).front();
  const FittedSphere sphere = fitSphere(placesOf(scan.grid(), region));
  EXPECT_NEAR(sphere.radius, 20, 0.03);
  EXPECT_NEAR(length(sphere.centre - Place{10, 0, 480}), 0, 0.03);
}

// An error of the surface stays in the figure: it is not cut off as something beside the ball.
TEST(RegionsTest, ADentIsPartOfTheBall) {
  Scan scan({ball({0, 0, 500}, 30)});
  const std::size_t middle = std::size_t{Scan::height} / 2 * Scan::width + Scan::width / 2;
  for (std::size_t row = 0; row < 5; ++row) {
    for (std::size_t column = 0; column < 5; ++column) {
      const std::size_t pixel = middle + row * Scan::width + column;
      scan.points[3 * pixel + 2] += 0.4F;
    }
  }
  const Position position = measurePosition(Artefact::sphere, 1, {scan.grid(), {}}, {60, 0, 0});
  EXPECT_NEAR(position.readings.front().value, 0.4, 0.05);
}

TEST(RegionsTest, WhatIsNotThereIsTold) {
  const Scan one({ball(leftCentre, 25), wall});
  EXPECT_EQ(failureOf([&] { findBalls(one.grid(), 50, 2); }), "ball 2 of 2, of 50 mm, is not in view");
  EXPECT_NE(failureOf([&] { findBalls(one.grid(), 80, 1); }).find("is not in view"), std::string::npos) << "the ball has 50 mm";
  const Scan nothing({});
  EXPECT_NE(failureOf([&] { findBalls(nothing.grid(), 50, 1); }).find("not in view"), std::string::npos);
  EXPECT_NE(failureOf([&] { findPlate(nothing.grid()); }).find("a plate is not in view"), std::string::npos);
}

TEST(RegionsTest, ThePlateIsTheLargestPlane) {
  const Scan scan({plane({0, 0, 1}, 500, -100, 60), plane({0.6, 0, 0.8}, 440, 60, 300), ball({-140, 0, 500}, 20)});
  const FittedPlane plate = fitPlane(placesOf(scan.grid(), findPlate(scan.grid())));
  EXPECT_NEAR(plate.distance, 500, 0.01);
  EXPECT_NEAR(plate.normal[2], 1, 1e-6);
}

TEST(RegionsTest, DeviationsHaveTheirPlaceInThePicture) {
  const Scan scan({ball({0, 0, 500}, 30)});
  const Position position = measurePosition(Artefact::sphere, 3, {scan.grid(), {}}, {60, 0, 0});
  const DeviationMap& map = position.deviations;
  EXPECT_EQ(position.number, 3U);
  EXPECT_NEAR(map.width, 41, 2);
  EXPECT_NEAR(map.height, 41, 2);
  ASSERT_EQ(map.values.size(), std::size_t{map.width} * map.height);
  EXPECT_TRUE(std::isnan(map.values.front())) << "a ball leaves the corners of its rectangle";
  EXPECT_LT(std::abs(map.values[map.values.size() / 2]), 0.05);
  EXPECT_EQ(std::count_if(map.values.begin(), map.values.end(), [](float value) { return std::isfinite(value); }),
            static_cast<std::ptrdiff_t>(position.points));
}

TEST(ConnectedTest, TheLargestPartCornersIncluded) {
  const std::vector<std::uint8_t> pixels{1, 0, 0, 0, 1,  //
                                         1, 0, 1, 0, 0,  //
                                         0, 0, 0, 1, 1};
  EXPECT_EQ(largestConnected(pixels, 5), (std::vector<std::size_t>{7, 13, 14}));
  EXPECT_TRUE(largestConnected(std::vector<std::uint8_t>(15), 5).empty());
  EXPECT_TRUE(largestConnected({}, 0).empty());
}

TEST(ConnectedTest, RowsDoNotGoOnAtTheOtherBorder) {
  const std::vector<std::uint8_t> pixels{0, 0, 1, 1,  //
                                         1, 0, 0, 0};
  EXPECT_EQ(largestConnected(pixels, 4), (std::vector<std::size_t>{2, 3}));
}

TEST(VotesTest, MostAgreeOnOnePlace) {
  std::vector<Place> places;
  for (int i = 0; i < 1000; ++i) places.push_back({i % 10 * 10.0, i / 10 % 10 * 10.0, i / 100 * 10.0});
  for (int i = 0; i < 20; ++i) places.push_back({33 + 0.1 * (i % 3), -44.9, 55.1});
  const Place most = mostNamed(places, 2);
  EXPECT_NEAR(length(most - Place{33.1, -44.9, 55.1}), 0, 0.1);
}

}  // namespace
}  // namespace fringix::tool
