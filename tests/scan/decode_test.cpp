// Single pixels through the decoder: the levels are computed for a column, so what comes back is known.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "scan/conditions.h"
#include "scan/decode.h"
#include "scan/turn.h"

namespace fringix::scan {
namespace {

TEST(TurnTest, IsRightToAFewTenMillionths) {
  double worst = 0;
  for (int i = 0; i < 200000; ++i) {
    const double angle = 2 * std::numbers::pi * (i + 0.5) / 200000;
    const double turn = static_cast<double>(turnOf(static_cast<float>(100 * std::sin(angle)), static_cast<float>(100 * std::cos(angle))));
    const double away = turn - angle / (2 * std::numbers::pi);
    worst = std::max(worst, std::abs(away - std::round(away)));
  }
  EXPECT_LT(worst, 4e-7);
  EXPECT_EQ(turnOf(0, 0), 0);
}

// All pixels of a strip show the same column; `change` may spoil a level.
class DecodedPixel {
 public:
  template <class Change>
  DecodedPixel(const Plan& plan, double column, Change&& change, const DecodeLimits& limits = {}, double middle = 0) {
    SumsOfStrips sums(plan, 1);
    for (std::size_t i = 0; i < plan.pictures().size(); ++i) {
      Strip<std::uint8_t> pixels;
      pixels.fill(static_cast<std::uint8_t>(std::lround(change(i, levelAt(plan, i, column)))));
      add(plan.pictures()[i], pixels.data(), sums[0]);
    }
    Decoder(plan, limits).under({limits.noise, middle}).decode(sums[0], decoded_);
  }
  explicit DecodedPixel(const Plan& plan, double column) : DecodedPixel(plan, column, [](std::size_t, double level) { return level; }) {}

  Reason reason() const { return static_cast<Reason>(decoded_.reason[17]); }
  double column() const { return static_cast<double>(decoded_.column[17]); }
  const DecodedStrip& all() const { return decoded_; }

 private:
  static double levelAt(const Plan& plan, std::size_t picture, double column) {
    const PictureRole& role = plan.pictures()[picture];
    if (role.kind != PictureKind::phase) {
      const auto line = plan.line(picture);
      return 10 +
             200.0 / 255 * line[static_cast<std::size_t>(std::clamp<double>(std::round(column), 0, plan.settings().projectorWidth - 1))];
    }
    const Frequency& frequency = plan.frequencies()[static_cast<std::size_t>(role.frequency)];
    const double turns = (column + 0.5 + frequency.lead) / frequency.period - static_cast<double>(role.number) / plan.settings().steps;
    return 110 + 100 * std::cos(2 * std::numbers::pi * turns);
  }

  DecodedStrip decoded_;
};

const Plan gray(defaultSettings(Method::grayAndPhase, 1280));
const Plan three(defaultSettings(Method::threeFrequencies, 1280));

TEST(DecodeTest, EveryColumnComesBack) {
  for (const Plan* const plan : {&gray, &three}) {
    for (double column = 3; column < 1276; column += 0.37) {
      const DecodedPixel pixel(*plan, column);
      ASSERT_EQ(pixel.reason(), Reason::none) << column;
      ASSERT_NEAR(pixel.column(), column, 0.03) << plan->settings().period;
    }
  }
}

TEST(DecodeTest, TellsModulationOffsetAndDeviation) {
  const DecodedPixel pixel(gray, 500.3);
  EXPECT_NEAR(pixel.all().modulation[0], 100, 0.3);
  EXPECT_NEAR(pixel.all().offset[0], 110, 0.3);
  const double expected = 10 / (2 * std::numbers::pi) * std::sqrt(0.2 * (1 + 1.0 / 12)) / 100;
  EXPECT_NEAR(std::sqrt(pixel.all().variance[0]), expected, 0.01 * expected);
}

// One bit at a border between half periods says nothing; the period is right all the same.
TEST(DecodeTest, ABitBetweenWhiteAndBlackDoesNoHarmAtItsBorder) {
  for (double column = 5; column < 1270; column += 5) {
    const DecodedPixel before(gray, column - 0.6);
    const DecodedPixel behind(gray, column - 0.4);
    for (const double level : {108.0, 110.0, 112.0}) {
      const auto blurred = [&](std::size_t i, double plain) {
        const bool changes = gray.pictures()[i].kind == PictureKind::gray &&
                             gray.line(i)[static_cast<std::size_t>(column)] != gray.line(i)[static_cast<std::size_t>(column) - 1];
        return changes ? level : plain;
      };
      const DecodedPixel pixel(gray, column - 0.5, blurred);
      ASSERT_EQ(pixel.reason(), Reason::none) << column;
      ASSERT_NEAR(pixel.column(), column - 0.5, 0.03);
    }
  }
}

Reason reasonWhen(const Plan& plan, double column, const std::function<double(std::size_t, double)>& change,
                  const DecodeLimits& limits = {}) {
  return DecodedPixel(plan, column, change, limits).reason();
}

TEST(DecodeReasonTest, Saturation) {
  EXPECT_EQ(reasonWhen(gray, 500, [](std::size_t i, double level) { return i == 0 ? 254 : level; }), Reason::saturation);
  EXPECT_EQ(reasonWhen(gray, 500, [](std::size_t i, double level) { return i == 0 ? 253 : level; }), Reason::none);
  DecodeLimits never;
  never.saturation = 256;
  EXPECT_EQ(reasonWhen(
                gray, 500, [](std::size_t i, double level) { return i == 0 ? 255 : level; }, never),
            Reason::none);
}

TEST(DecodeReasonTest, Noise) {
  EXPECT_EQ(reasonWhen(gray, 500, [](std::size_t, double) { return 50; }), Reason::noise);
  EXPECT_EQ(reasonWhen(gray, 500, [](std::size_t, double level) { return 0.02 * level; }), Reason::noise);
}

TEST(DecodeReasonTest, GrayMargin) {
  const auto uncertain = [](std::size_t i, double level) { return i == 5 ? 110 : level; };
  EXPECT_EQ(reasonWhen(gray, 502, uncertain), Reason::grayMargin) << "a bit where none changes";
  const auto two = [](std::size_t i, double level) { return i == 8 || i == 9 ? 110 : level; };
  EXPECT_EQ(reasonWhen(gray, 502, two), Reason::grayMargin);
  const auto atItsBorder = [](std::size_t i, double level) { return i == 8 ? 110 : level; };
  EXPECT_EQ(reasonWhen(gray, 509.5, atItsBorder), Reason::none);
  const auto besideAnother = [&](std::size_t i, double level) { return i == 4 ? 111 : atItsBorder(i, level); };
  EXPECT_EQ(reasonWhen(gray, 509.5, besideAnother), Reason::grayMargin) << "the weaker one does no harm, but the other one is weak, too";
}

// The lowest bit misread in the middle of a half period leaves the number half a period away.
TEST(DecodeReasonTest, Residual) {
  const auto misread = [](std::size_t i, double level) { return i == 9 ? 220 - level : level; };
  EXPECT_EQ(reasonWhen(gray, 506.5, [&](std::size_t i, double level) { return misread(i, level); }), Reason::residual);
}

TEST(DecodeReasonTest, Column) {
  EXPECT_EQ(reasonWhen(gray, 1, [](std::size_t, double level) { return level; }), Reason::column);
  EXPECT_EQ(reasonWhen(gray, 1278, [](std::size_t, double level) { return level; }), Reason::column);
  EXPECT_EQ(reasonWhen(three, -20, [](std::size_t, double level) { return level; }), Reason::column);
}

// Five deviations of noise, and 2 % of the light.
TEST(DecodeReasonTest, UnsteadyIsAWhiteThatDoesNotFitTheMiddleOfTheSteps) {
  const auto reasonOf = [](double whiter, double middle) {
    return DecodedPixel(
               gray, 500, [=](std::size_t i, double level) { return i == 0 ? level + whiter : level; }, {}, middle)
        .reason();
  };
  for (const double little : {-11, 11}) EXPECT_EQ(reasonOf(little, 0.5), Reason::none);
  for (const double much : {-13, 13}) EXPECT_EQ(reasonOf(much, 0.5), Reason::unsteady);
  EXPECT_EQ(reasonOf(13, 0), Reason::none) << "where the middle is not known nothing is told of the white";
}

TEST(DecodeReasonTest, Unsteady) {
  EXPECT_EQ(reasonWhen(gray, 500, [](std::size_t i, double level) { return i == 15 ? level + 40 : level; }), Reason::unsteady);
  EXPECT_EQ(reasonWhen(three, 500, [](std::size_t i, double level) { return i == 15 ? level + 40 : level; }), Reason::unsteady);
}

}  // namespace
}  // namespace fringix::scan
