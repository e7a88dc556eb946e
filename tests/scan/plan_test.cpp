#include <gtest/gtest.h>

#include <bit>

#include "scan/plan.h"

namespace fringix::scan {
namespace {

Plan defaultPlan(Method method, std::int32_t width = 1280) { return Plan(defaultSettings(method, width)); }

std::vector<PictureKind> kinds(const Plan& plan) {
  std::vector<PictureKind> kinds;
  for (const PictureRole& role : plan.pictures()) kinds.push_back(role.kind);
  return kinds;
}

TEST(ScanPlanTest, TheDefaultIsWhiteBlackEightBitsAndTenSteps) {
  const Plan plan = defaultPlan(Method::grayAndPhase);
  std::vector<PictureKind> expected = {PictureKind::white, PictureKind::black};
  expected.insert(expected.end(), 8, PictureKind::gray);
  expected.insert(expected.end(), 10, PictureKind::phase);
  EXPECT_EQ(kinds(plan), expected);
  EXPECT_EQ(plan.pictures()[2].number, 7) << "the highest bit first";
  EXPECT_EQ(plan.pictures()[9].number, 0);
  EXPECT_EQ(plan.pictures()[19].number, 9);
}

TEST(ScanPlanTest, ThreeFrequenciesTakeTwentyPicturesCoarsestFirst) {
  const Plan plan = defaultPlan(Method::threeFrequencies);
  ASSERT_EQ(plan.pictures().size(), 20U);
  EXPECT_EQ(plan.pictures()[2].frequency, 2);
  EXPECT_EQ(plan.pictures()[19].frequency, 0);
  EXPECT_EQ(plan.frequencies()[1].period, 8 * plan.frequencies()[0].period);
  EXPECT_EQ(plan.frequencies()[2].period, 64 * plan.frequencies()[0].period);
  EXPECT_GT(plan.frequencies()[2].period, 1280);
}

TEST(ScanPlanTest, ALineHasAPixelForEachColumn) {
  for (const Method method : {Method::grayAndPhase, Method::threeFrequencies}) {
    const Plan plan = defaultPlan(method);
    for (std::size_t i = 0; i < plan.pictures().size(); ++i) EXPECT_EQ(plan.line(i).size(), 1280U);
    EXPECT_EQ(plan.line(0), std::vector<std::uint8_t>(1280, 255));
    EXPECT_EQ(plan.line(1), std::vector<std::uint8_t>(1280, 0));
  }
}

TEST(ScanPlanTest, GrayLinesCountHalfPeriodsAndChangeOneBitAtATime) {
  const Plan plan = defaultPlan(Method::grayAndPhase);
  unsigned before = 0;
  for (std::size_t column = 0; column < 1280; ++column) {
    unsigned gray = 0;
    for (std::size_t bit = 0; bit < 8; ++bit) gray = 2 * gray + (plan.line(2 + bit)[column] == 255 ? 1U : 0U);
    EXPECT_EQ(std::popcount(gray ^ before), column > 0 && column % 5 == 0 ? 1 : 0) << column;
    before = gray;
  }
}

TEST(ScanPlanTest, StepsMoveTheCosineByATenthOfThePeriod) {
  const Plan plan = defaultPlan(Method::grayAndPhase);
  const auto first = plan.line(10);
  const auto second = plan.line(11);
  for (std::size_t column = 1; column < 1280; ++column) EXPECT_EQ(second[column], first[column - 1]) << column;
  EXPECT_NE(first[0], first[5]);
}

TEST(ScanPlanTest, SomeNumbersOfStepsTellAGamma) {
  for (std::int32_t steps = 3; steps <= 64; ++steps) {
    const bool some = steps == 8 || steps == 10 || steps == 12 || steps == 16 || steps == 20 || steps == 24;
    EXPECT_EQ(Plan({Method::grayAndPhase, 1280, 10, steps}).tellsHarmonic(), some) << steps;
    EXPECT_FALSE(Plan({Method::threeFrequencies, 1280, 26, steps}).tellsHarmonic()) << steps;
  }
}

}  // namespace
}  // namespace fringix::scan
