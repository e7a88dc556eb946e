// Cleaning, patches and normals on clouds made by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "scan/clean.h"
#include "scan/normals.h"
#include "scan/patches.h"
#include "scan/strip.h"

namespace fringix::scan {
namespace {

constexpr std::size_t width = 60;
constexpr std::size_t height = 40;
constexpr double spacing = 0.001;
constexpr float none = std::numeric_limits<float>::quiet_NaN();

// A surface of given depths before a pinhole at the origin.
struct Relief {
  std::vector<float> points = std::vector<float>(3 * width * height);
  std::vector<float> sigma = std::vector<float>(width * height, 0.005F);
  std::vector<std::uint8_t> reason = std::vector<std::uint8_t>(width * height, 0);

  explicit Relief(const std::function<double(std::size_t, std::size_t)>& depth) {
    for (std::size_t row = 0; row < height; ++row) {
      for (std::size_t column = 0; column < width; ++column) set(column, row, depth(column, row));
    }
  }

  void set(std::size_t column, std::size_t row, double depth) {
    const std::size_t pixel = row * width + column;
    points[3 * pixel] = static_cast<float>(depth * spacing * (static_cast<double>(column) - 30));
    points[3 * pixel + 1] = static_cast<float>(depth * spacing * (static_cast<double>(row) - 20));
    points[3 * pixel + 2] = static_cast<float>(depth);
    if (std::isnan(depth)) reason[pixel] = 1;
  }
  Relief& clean(const CleanLimits& limits, std::size_t threads = 1) {
    scan::clean({points.data(), sigma.data(), reason.data(), width, height, {}, spacing}, limits, threads);
    return *this;
  }
  std::vector<float> normals() const {
    std::vector<float> result(points.size());
    scan::normals(points.data(), width, height, {}, spacing, result.data(), 2);
    return result;
  }
  std::size_t count(Reason wanted) const {
    return static_cast<std::size_t>(std::count(reason.begin(), reason.end(), static_cast<std::uint8_t>(wanted)));
  }
};

double flat(std::size_t, std::size_t) { return 400; }
double stepped(std::size_t column, std::size_t) { return column < 20 ? 400 : 420; }

TEST(CleanTest, LeavesAPlaneAsItIs) {
  EXPECT_EQ(Relief(flat).clean({}).count(Reason::none), width * height);
  const auto steep = [](std::size_t column, std::size_t) { return 400 + 1.2 * static_cast<double>(column); };
  EXPECT_EQ(Relief(steep).clean({}).count(Reason::none), width * height);
}

TEST(CleanTest, TakesBothSidesOfADepthStepAway) {
  const Relief relief = Relief(stepped).clean({});
  EXPECT_EQ(relief.count(Reason::edge), 2 * height);
  EXPECT_EQ(relief.reason[5 * width + 19], static_cast<std::uint8_t>(Reason::edge));
  EXPECT_TRUE(std::isnan(relief.points[3 * (5 * width + 20)]));
  EXPECT_TRUE(std::isnan(relief.sigma[5 * width + 20]));
}

TEST(CleanTest, TakesBothSidesOfAStepBetweenRowsAway) {
  const Relief relief = Relief([](std::size_t, std::size_t row) { return row < 20 ? 400.0 : 420.0; }).clean({});
  EXPECT_EQ(relief.count(Reason::edge), 2 * width);
  for (const std::size_t row : {19U, 20U}) EXPECT_EQ(relief.reason[row * width + 7], static_cast<std::uint8_t>(Reason::edge));
}

TEST(CleanTest, ReachesTheLastRowOfAnyHeight) {
  for (std::size_t rows = 1; rows < height; ++rows) {
    Relief relief(stepped);
    scan::clean({relief.points.data(), relief.sigma.data(), relief.reason.data(), width, rows, {}, spacing}, {}, 2);
    EXPECT_EQ(relief.count(Reason::edge), 2 * rows);
  }
}

TEST(CleanTest, TakesAFlyingPixelBetweenTwoSurfacesAway) {
  Relief relief(stepped);
  for (std::size_t row = 0; row < height; ++row) relief.set(20, row, 410);
  EXPECT_EQ(relief.clean({}).reason[5 * width + 20], static_cast<std::uint8_t>(Reason::edge));
}

TEST(CleanTest, TakesAnOutlierAwayAndLeavesACrease) {
  Relief relief(flat);
  relief.set(30, 20, 400.2);
  EXPECT_EQ(relief.clean({}).count(Reason::outlier), 1U);
  EXPECT_EQ(relief.reason[20 * width + 30], static_cast<std::uint8_t>(Reason::outlier));
  const auto roof = [](std::size_t column, std::size_t) { return 400 + std::abs(static_cast<double>(column) - 30); };
  EXPECT_EQ(Relief(roof).clean({}).count(Reason::none), width * height);
}

TEST(CleanTest, TakesSmallPatchesAway) {
  Relief relief([](std::size_t column, std::size_t row) -> double {
    const bool island = column >= 40 && column < 47 && row >= 10 && row < 17;
    return island || column < 20 ? 400.0 : std::nan("");
  });
  EXPECT_EQ(Relief(relief).clean({.leastPatch = 49}).count(Reason::component), 0U);
  for (const std::int32_t all : {0, 1}) EXPECT_EQ(Relief(relief).clean({.leastPatch = all}).count(Reason::component), 0U);
  EXPECT_EQ(relief.clean({.leastPatch = 50}).count(Reason::component), 49U);
  EXPECT_EQ(relief.count(Reason::none), 20 * height);
}

TEST(CleanTest, EachPartCanBeTurnedOff) {
  Relief relief(stepped);
  relief.set(30, 20, 420.2);
  EXPECT_EQ(Relief(relief).clean({.on = false}).count(Reason::none), width * height);
  EXPECT_EQ(Relief(relief).clean({.edgeAngle = 90}).count(Reason::edge), 0U);
  const auto vast = [](std::size_t column, std::size_t) { return column < 20 ? 400.0 : 500000.0; };
  EXPECT_EQ(Relief(vast).clean({.edgeAngle = 90}).count(Reason::edge), 0U);
  EXPECT_EQ(Relief(relief).clean({.outlier = 0}).count(Reason::outlier), 0U);
  EXPECT_EQ(Relief(relief).clean({.leastPatch = 100000}).count(Reason::none), 0U);
}

TEST(CleanTest, IsTheSameForAnyNumberOfThreads) {
  std::mt19937 chance(3);
  std::uniform_real_distribution<double> share(0, 1);
  const Relief relief([&](std::size_t, std::size_t) { return share(chance) < 0.1 ? 405.0 : 400.0 + 0.1 * share(chance); });
  const auto one = Relief(relief).clean({}, 1).reason;
  EXPECT_EQ(one, Relief(relief).clean({}, 4).reason);
  EXPECT_NE(one, relief.reason);
}

// Against a flood that goes from pixel to pixel.
std::size_t floodedSize(const std::vector<std::uint8_t>& reason, std::size_t start, std::vector<bool>& seen) {
  std::vector<std::size_t> open = {start};
  std::size_t size = 0;
  seen[start] = true;
  while (!open.empty()) {
    const std::size_t pixel = open.back();
    open.pop_back();
    ++size;
    const auto visit = [&](bool there, std::size_t next) {
      if (!there || seen[next] || reason[next] != 0) return;
      seen[next] = true;
      open.push_back(next);
    };
    visit(pixel % width > 0, pixel - 1);
    visit(pixel % width + 1 < width, pixel + 1);
    visit(pixel >= width, pixel - width);
    visit(pixel + width < width * height, pixel + width);
  }
  return size;
}

TEST(PatchesTest, AreThoseOfAFlood) {
  std::mt19937 chance(5);
  for (const unsigned share : {30U, 40U, 50U}) {
    std::vector<std::uint8_t> reason(width * height);
    for (std::uint8_t& r : reason) r = chance() % 100 < share ? 1 : 0;
    std::size_t expected = 0;
    std::vector<bool> seen(reason.size(), false);
    for (std::size_t i = 0; i < reason.size(); ++i) {
      if (reason[i] != 0 || seen[i]) continue;
      const std::size_t size = floodedSize(reason, i, seen);
      expected += size < 30 ? size : 0;
    }
    std::size_t found = 0;
    for (const scan::Run& run : smallPatches(reason.data(), width, height, 30)) found += run.end - run.first;
    EXPECT_EQ(found, expected);
    EXPECT_GT(found, 0U);
  }
}

TEST(NormalsTest, OfAPlaneAreItsOwnUpToTheBorder) {
  const Relief relief([](std::size_t column, std::size_t row) {
    const double x = spacing * (static_cast<double>(column) - 30);
    const double y = spacing * (static_cast<double>(row) - 20);
    return 400 / (1 + 0.3 * x - 0.2 * y);
  });
  const std::vector<float> normals = relief.normals();
  const double length = std::sqrt(1 + 0.09 + 0.04);
  for (std::size_t i = 0; i < width * height; ++i) {
    ASSERT_NEAR(static_cast<double>(normals[3 * i]), -0.3 / length, 1e-3) << i;
    ASSERT_NEAR(static_cast<double>(normals[3 * i + 1]), 0.2 / length, 1e-3) << i;
    ASSERT_NEAR(static_cast<double>(normals[3 * i + 2]), -1 / length, 1e-3) << i;
  }
}

TEST(NormalsTest, DoNotReachOverAStep) {
  const std::vector<float> normals = Relief(stepped).normals();
  for (std::size_t i = 0; i < width * height; ++i) ASSERT_NEAR(normals[3 * i + 2], -1, 1e-3) << i;
}

TEST(NormalsTest, AreNoNumbersWhereThereIsNoSurface) {
  Relief relief([](std::size_t, std::size_t) { return static_cast<double>(none); });
  relief.set(30, 20, 400);
  for (const float value : relief.normals()) ASSERT_TRUE(std::isnan(value));
}

}  // namespace
}  // namespace fringix::scan
