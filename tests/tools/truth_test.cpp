// How far points are from a scene that is known.
#include "scanning/truth.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace fringix::tool {
namespace {

const Truth square{{{{0, 0, 1}, 500, {{-10, -10, 500}, {10, -10, 500}, {10, 10, 500}, {-10, 10, 500}}}}, {}};
const Truth ball{{}, {{{0, 0, 500}, 50}}};

TEST(TruthTest, BehindAPlaneIsAboveZero) {
  EXPECT_DOUBLE_EQ(errorOf(square, {1, 2, 500.25}), 0.25);
  EXPECT_DOUBLE_EQ(errorOf(square, {1, 2, 499}), -1);
}

TEST(TruthTest, BesideAPlaneItsBorderCounts) {
  EXPECT_DOUBLE_EQ(errorOf(square, {13, 0, 504}), 5);
  EXPECT_DOUBLE_EQ(errorOf(square, {13, 14, 500}), 5);
}

TEST(TruthTest, BordersMayRunEitherWay) {
  Truth turned = square;
  std::swap(turned.planes[0].corners[1], turned.planes[0].corners[3]);
  EXPECT_DOUBLE_EQ(errorOf(turned, {1, 2, 501}), 1);
  EXPECT_DOUBLE_EQ(errorOf(turned, {13, 0, 504}), 5);
}

TEST(TruthTest, APlaneWithoutBordersHasNoEnd) {
  const Truth endless{{{{0, 0, 1}, 500, {}}}, {}};
  EXPECT_DOUBLE_EQ(errorOf(endless, {1e4, 0, 501}), 1);
}

TEST(TruthTest, InsideABallIsBehindItsFront) {
  EXPECT_DOUBLE_EQ(errorOf(ball, {0, 0, 451}), 1);
  EXPECT_DOUBLE_EQ(errorOf(ball, {0, 0, 449}), -1);
}

TEST(TruthTest, TheNearestSurfaceCounts) {
  Truth both = square;
  both.spheres = {{{0, 0, 450}, 20}};
  EXPECT_DOUBLE_EQ(errorOf(both, {0, 0, 429.5}), -0.5);
  EXPECT_DOUBLE_EQ(errorOf(both, {0, 0, 499.5}), -0.5);
}

TEST(TruthTest, FiguresOfErrors) {
  std::vector<float> errors(100, 0.01F);
  for (std::size_t i = 0; i < 4; ++i) errors[i] = -1;
  std::vector<float> sigmas(100, 0.0021F);
  sigmas[0] = 0.21F;
  const ErrorFigures figures = figuresOf(errors, sigmas);
  EXPECT_NEAR(figures.rootMeanSquare, 0.20025, 1e-4);
  EXPECT_NEAR(figures.within95, 0.01, 1e-6);
  EXPECT_NEAR(figures.mean, -0.0304, 1e-6);
  EXPECT_NEAR(figures.largest, 1, 1e-6);
  EXPECT_DOUBLE_EQ(figures.beyond, 0.03) << "of either sign";
}

TEST(TruthTest, ReadsWhatAHeadTells) {
  const Truth truth = readTruth(R"({"format": "fringix-truth", "version": 1, "unit": "mm",
    "planes": [{"normal": [0, 0, 1], "distance": 500, "corners": [[0, 0, 500], [1, 0, 500], [1, 1, 500]]}, {"normal": [1, 0, 0], "distance": 2}],
    "spheres": [{"center": [1, 2, 3], "radius": 25}]})");
  ASSERT_EQ(truth.planes.size(), 2U);
  EXPECT_EQ(truth.planes[0].corners.size(), 3U);
  EXPECT_TRUE(truth.planes[1].corners.empty());
  EXPECT_EQ(truth.planes[1].distance, 2);
  ASSERT_EQ(truth.spheres.size(), 1U);
  EXPECT_EQ(truth.spheres[0].centre, (Place{1, 2, 3}));
}

TEST(TruthTest, WhatCannotBeMeasuredAgainstIsRefused) {
  EXPECT_THROW(readTruth("{"), std::runtime_error);
  EXPECT_THROW(readTruth(R"({"format": "other", "version": 1, "planes": [], "spheres": []})"), std::runtime_error);
  EXPECT_THROW(readTruth(R"({"format": "fringix-truth", "version": 1, "planes": [], "spheres": []})"), std::runtime_error);
  EXPECT_THROW(readTruth(R"({"format": "fringix-truth", "version": 1, "planes": [{"normal": [0, 1]}], "spheres": []})"),
               std::runtime_error);
}

}  // namespace
}  // namespace fringix::tool
