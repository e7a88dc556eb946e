// Spheres and planes through points, and how far the points are from them.
#include "acceptance/fits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <vector>

#include "acceptance/figures.h"

namespace fringix::tool {
namespace {

constexpr Place centre{40, -30, 480};
constexpr double radius = 25;

// The part of a sphere within an angle of the direction to the origin, evenly; `deviation` gives how far each point lies outside.
template <class Deviation>
std::vector<Place> cap(std::size_t count, double degrees, Deviation deviation) {
  const double least = std::cos(degrees * std::numbers::pi / 180);
  std::vector<Place> points;
  for (std::size_t i = 0; i < count; ++i) {
    const double height = 1 - (1 - least) * (static_cast<double>(i) + 0.5) / static_cast<double>(count);
    const double turn = static_cast<double>(i) * 2.399963229728653;  // the golden angle
    const double across = std::sqrt(1 - height * height);
    points.push_back(centre + Place{across * std::cos(turn), across * std::sin(turn), -height} * (radius + deviation()));
  }
  return points;
}

std::vector<Place> exactCap(std::size_t count, double degrees) {
  return cap(count, degrees, [] { return 0.0; });
}

auto noise(double sigma) {
  return [generator = std::mt19937(7), sigma]() mutable {
    double sum = -6;
    for (int i = 0; i < 12; ++i) sum += static_cast<double>(generator()) / 4294967296.0;
    return sigma * sum;
  };
}

Place onPlane(double x, double y) { return {x, y, 500 + 0.3 * x - 0.1 * y}; }

std::vector<Place> grid(std::size_t side, auto deviation) {
  const Place normal = Place{-0.3, 0.1, 1} * (1 / std::sqrt(1.1));
  std::vector<Place> points;
  for (std::size_t i = 0; i < side * side; ++i)
    points.push_back(onPlane(static_cast<double>(i % side), static_cast<double>(i / side)) + normal * deviation());
  return points;
}

template <class Call>
std::string reasonOf(Call call) {
  try {
    call();
    return "none";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(SphereFitTest, ExactPointsGiveTheirSphere) {
  for (const double degrees : {5.0, 20.0, 60.0, 180.0}) {
    const FittedSphere sphere = fitSphere(exactCap(500, degrees));
    EXPECT_NEAR(sphere.radius, radius, 1e-7) << degrees;
    EXPECT_NEAR(length(sphere.centre - centre), 0, 1e-7) << degrees;
  }
}

TEST(SphereFitTest, FourPointsAreEnough) { EXPECT_NEAR(fitSphere(exactCap(4, 60)).radius, radius, 1e-9); }

// For a cap of 60 degrees the information matrix gives standard deviations of 5.3 sigma / sqrt(n) for the radius and 6.9 for the centre's
// place along the axis.
TEST(SphereFitTest, NoiseAveragesOut) {
  const FittedSphere sphere = fitSphere(cap(20000, 60, noise(0.02)));
  EXPECT_NEAR(sphere.radius, radius, 4 * 5.3 * 0.02 / std::sqrt(20000));
  EXPECT_NEAR(length(sphere.centre - centre), 0, 4 * 6.9 * 0.02 / std::sqrt(20000));
}

// No neighbouring sphere has a smaller sum of squares: that is what an algebraic fit would not give.
TEST(SphereFitTest, HasTheLeastSquares) {
  const std::vector<Place> points = cap(300, 40, noise(0.5));
  const auto squares = [&](const FittedSphere& sphere) {
    double sum = 0;
    for (const Place& point : points) sum += sphere.deviation(point) * sphere.deviation(point);
    return sum;
  };
  const FittedSphere best = fitSphere(points);
  for (const double step : {-1e-4, 1e-4}) {
    EXPECT_GT(squares({best.centre, best.radius + step}), squares(best));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      FittedSphere moved = best;
      moved.centre[axis] += step;
      EXPECT_GT(squares(moved), squares(best));
    }
  }
}

TEST(SphereFitTest, AGivenRadiusStays) {
  const FittedSphere sphere = fitSphereOfRadius(exactCap(500, 60), 25);
  EXPECT_EQ(sphere.radius, 25);
  EXPECT_NEAR(length(sphere.centre - centre), 0, 1e-7);
  const FittedSphere larger = fitSphereOfRadius(exactCap(500, 60), 26);
  EXPECT_EQ(larger.radius, 26);
  EXPECT_GT(larger.centre[2], centre[2] + 0.9);
}

TEST(SphereFitTest, WhatDeterminesNoneIsRefused) {
  EXPECT_NE(reasonOf([] { fitSphere(exactCap(3, 60)); }).find("there are 3, at least 4 are needed"), std::string::npos);
  EXPECT_NE(reasonOf([] { fitSphere(grid(20, [] { return 0.0; })); }).find("in a plane"), std::string::npos);
  EXPECT_NE(reasonOf([] { fitSphereOfRadius(std::vector<Place>(10, Place{1, 2, 3}), 25); }).find("on a line"), std::string::npos);
  EXPECT_NE(reasonOf([] { fitSphere(std::vector<Place>(10, Place{1, NAN, 3})); }).find("have no place"), std::string::npos);
}

TEST(PlaneFitTest, ExactPointsGiveTheirPlane) {
  const FittedPlane plane = fitPlane(grid(30, [] { return 0.0; }));
  EXPECT_NEAR(plane.distance, 500 / std::sqrt(1.1), 1e-9);
  EXPECT_NEAR(length(plane.normal - Place{-0.3, 0.1, 1} * (1 / std::sqrt(1.1))), 0, 1e-12) << "and it points away from the origin";
}

TEST(PlaneFitTest, WhatDeterminesNoneIsRefused) {
  EXPECT_NE(reasonOf([] { fitPlane({}); }).find("there are 0, at least 3 are needed"), std::string::npos);
  std::vector<Place> line;
  for (int i = 0; i < 50; ++i) line.push_back({1.0 * i, 2.0 * i, 500});
  EXPECT_NE(reasonOf([&] { fitPlane(line); }).find("on a line"), std::string::npos);
  EXPECT_NE(reasonOf([] { fitPlane(std::vector<Place>(9, Place{1, 2, 3})); }).find("on a line"), std::string::npos);
}

TEST(FormTest, NoiseGivesTheFiguresOfItsDistribution) {
  constexpr double sigma = 0.01;
  const SphereFigures ball = measureSphere(cap(20000, 60, noise(sigma)), radius);
  EXPECT_NEAR(ball.form.within95, 3.92 * sigma, 0.1 * sigma);
  EXPECT_NEAR(ball.form.whole, 5.9 * sigma, 0.3 * sigma) << "3 per mille are beyond 2.97 sigma";
  const PlaneFigures plate = measurePlane(grid(150, noise(sigma)));
  EXPECT_NEAR(plate.form.within95, 3.92 * sigma, 0.1 * sigma);
  EXPECT_NEAR(plate.form.whole, 5.9 * sigma, 0.3 * sigma);
}

TEST(FormTest, ThreePerMilleAreDroppedAndNoMore) {
  std::vector<Place> points = grid(50, [] { return 0.0; });
  const auto formWith = [&](std::size_t outliers) {
    std::vector<Place> spoilt = points;
    for (std::size_t i = 0; i < outliers; ++i) spoilt[i * 331 % spoilt.size()][2] += 1;
    return measurePlane(spoilt).form.whole;
  };
  EXPECT_NEAR(formWith(7), 0, 1e-9) << "of 2500 points, 7 are 2.8 per mille";
  EXPECT_GT(formWith(8), 0.5);
}

TEST(FormTest, FewPointsAreAllKept) {
  std::vector<Place> points = grid(10, [] { return 0.0; });
  points[55][2] += 1;
  EXPECT_GT(measurePlane(points).form.whole, 0.8);
}

TEST(FormTest, TheThinnestShellCounts) {
  std::vector<Place> points = grid(20, [i = 0]() mutable { return i++ % 25 == 0 ? 0.5 : 0.0; });
  const PlaneFigures figures = measurePlane(points);
  EXPECT_LT(figures.form.within95, 0.05) << "4 % stand out, all to one side";
  EXPECT_GT(figures.form.whole, 0.4);
  EXPECT_EQ(figures.deviations.size(), points.size());
}

}  // namespace
}  // namespace fringix::tool
