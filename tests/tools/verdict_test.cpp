// The worst of all positions, against limits.
#include "acceptance/verdict.h"

#include <gtest/gtest.h>

#include "support/json.h"

namespace fringix::tool {
namespace {

Position ballAt(std::uint32_t number, double form, double sigma, double size) {
  return {Artefact::sphere, number, 1000, {{Figure::form, form, sigma}, {Figure::size, size}}, {}};
}

Position plateAt(std::uint32_t number, double flatness, double sigma) {
  return {Artefact::plane, number, 1000, {{Figure::flatness, flatness, sigma}}, {}};
}

TEST(VerdictTest, TheWorstPositionCounts) {
  const Position positions[] = {ballAt(1, 0.06, 0.01, 0.001), ballAt(2, 0.05, 0.01, -0.02), ballAt(3, 0.04, 0.01, 0.01)};
  const Verdict verdict = judge(positions, {}, 0);
  ASSERT_EQ(verdict.lines.size(), 2U);
  EXPECT_EQ(verdict.lines[0].position, 1U);
  EXPECT_DOUBLE_EQ(verdict.lines[0].limit, 0.07);
  EXPECT_EQ(verdict.lines[1].position, 2U);
  EXPECT_DOUBLE_EQ(verdict.lines[1].value, -0.02);
  EXPECT_TRUE(verdict.isAccepted);
}

TEST(VerdictTest, WorstIsWhatIsNearestToItsOwnLimit) {
  const Position positions[] = {ballAt(1, 0.10, 0.02, 0), ballAt(2, 0.08, 0.01, 0)};
  const Verdict verdict = judge(positions, {}, 0);
  EXPECT_EQ(verdict.lines[0].position, 2U);
  EXPECT_FALSE(verdict.lines[0].isKept());
  EXPECT_FALSE(verdict.isAccepted);
}

TEST(VerdictTest, LimitsThatAreGivenReplaceTheExpectedNoise) {
  const Position positions[] = {ballAt(1, 0.10, 0.02, 0), ballAt(2, 0.08, 0.01, 0)};
  AcceptanceLimits limits;
  limits.form = 0.1;
  const Verdict verdict = judge(positions, limits, 0);
  EXPECT_EQ(verdict.lines[0].position, 1U);
  EXPECT_TRUE(verdict.isAccepted) << "a limit is kept by what equals it";
  limits.form = 0.099;
  EXPECT_FALSE(judge(positions, limits, 0).isAccepted);
}

TEST(VerdictTest, EveryFigureHasItsLimit) {
  const std::pair<Figure, double AcceptanceLimits::*> figures[] = {{Figure::form, &AcceptanceLimits::form},
                                                                   {Figure::form95, &AcceptanceLimits::form95},
                                                                   {Figure::size, &AcceptanceLimits::size},
                                                                   {Figure::spacing, &AcceptanceLimits::spacing},
                                                                   {Figure::flatness, &AcceptanceLimits::flatness},
                                                                   {Figure::flatness95, &AcceptanceLimits::flatness95},
                                                                   {Figure::spacingOfCertified, &AcceptanceLimits::spacing}};
  for (const auto& [figure, limit] : figures) {
    const Position positions[] = {{Artefact::sphere, 1, 10, {{figure, -0.02, 0.01}}, {}}};
    AcceptanceLimits limits;
    limits.*limit = 0.021;
    EXPECT_TRUE(judge(positions, limits, 0).isAccepted) << nameOf(figure);
    limits.*limit = 0.019;
    EXPECT_FALSE(judge(positions, limits, 0).isAccepted) << nameOf(figure);
  }
}

TEST(VerdictTest, NoNumberIsNeverKept) {
  const Position positions[] = {ballAt(1, 0.01, 0.01, NAN), ballAt(2, 0.01, 0.01, 0)};
  EXPECT_FALSE(judge(positions, {}, 0).isAccepted);
}

TEST(VerdictTest, ThePlatesOwnFlatnessIsAllowed) {
  const Position positions[] = {plateAt(1, 0.075, 0.01)};
  EXPECT_FALSE(judge(positions, {}, 0).isAccepted);
  EXPECT_TRUE(judge(positions, {}, 0.006).isAccepted);
}

TEST(VerdictTest, FewerPositionsMakeATrial) {
  std::vector<Position> positions;
  for (std::uint32_t i = 1; i <= 5; ++i) positions.push_back(plateAt(i, 0, 0.01));
  EXPECT_FALSE(judge(positions, {}, 0).isComplete);
  positions.push_back(plateAt(6, 0, 0.01));
  EXPECT_TRUE(judge(positions, {}, 0).isComplete);
  positions.push_back(ballAt(1, 0, 0.01, 0));
  EXPECT_FALSE(judge(positions, {}, 0).isComplete);
}

TEST(VerdictTest, IsToldToPrograms) {
  const Position positions[] = {ballAt(1, 0.06, 0.01, 0.04)};
  const test::Json told(describe(judge(positions, {}, 0), positions).indented());
  EXPECT_EQ(told.at("/format").text(), "fringix-acceptance");
  EXPECT_EQ(told.at("/accepted").dump(), "false");
  EXPECT_EQ(told.at("/complete").dump(), "false");
  EXPECT_EQ(told.at("/figures/sizeError/kept").dump(), "false");
  EXPECT_NEAR(told.at("/figures/formError/limit").number(), 0.07, 1e-9);
  EXPECT_EQ(told.at("/positions/0/artefact").text(), "sphere");
  EXPECT_EQ(told.at("/positions/0/readings").size(), 2U);
}

}  // namespace
}  // namespace fringix::tool
