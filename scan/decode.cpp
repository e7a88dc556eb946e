#include "decode.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "conditions.h"
#include "failure.h"
#include "turn.h"

namespace fringix::scan {

namespace {

void requirePositive(double value, const char* name) {
  if (!(value > 0 && value < 1e9)) throw Failure(Status::badParameter, std::string("settings: ") + name + " has to be above 0");
}

void check(const DecodeLimits& limits) {
  if (!(limits.noise.floor >= 0 && limits.noise.floor < 256) ||
      !(limits.noise.variancePerLevel >= 0 && limits.noise.variancePerLevel < 256)) {
    throw Failure(Status::badParameter, "settings: the noise has to be 0 or more and below 256 grey levels");
  }
  if (limits.saturation < 1 || limits.saturation > 256) {
    throw Failure(Status::badParameter, "settings: the saturation level has to be 1 to 256 (never)");
  }
  requirePositive(limits.periodShare, "the limit of the phase's deviation");
  requirePositive(limits.grayMargin, "the margin of the Gray code");
  requirePositive(limits.residual, "the limit of the period's residual");
  requirePositive(limits.unsteadiness, "the limit of unsteadiness");
}

// How far above its mean a variance from few samples comes by chance about once in a million pixels.
double largestByChance(std::int32_t freedom) {
  const double spread = 2.0 / (9.0 * freedom);
  return std::pow(1 - spread + 5 * std::sqrt(spread), 3);
}

float size(float value) { return value < 0 ? -value : value; }

void turnsOf(const FrequencySums& sums, Strip<float>& turn) {
  for (std::size_t i = 0; i < stripLength; ++i) turn[i] = turnOf(sums.sine[i], sums.cosine[i]);
}

float power(const FrequencySums& sums, std::size_t i) { return sums.cosine[i] * sums.cosine[i] + sums.sine[i] * sums.sine[i]; }

float power(const HarmonicSums& sums, std::size_t i) {
  const auto cosine = static_cast<float>(sums.cosine[i]);
  const auto sine = static_cast<float>(sums.sine[i]);
  return (cosine * cosine + sine * sine) / (HarmonicSums::unit * HarmonicSums::unit);
}

}  // namespace

Decoder::Decoder(const Plan& plan, const DecodeLimits& limits)
    : frequencies_(plan.frequencies()),
      grayBits_(plan.grayBits()),
      steps_(plan.settings().steps),
      width_(plan.settings().projectorWidth),
      freedom_(0),
      limits_(limits) {
  check(limits);
  const auto count = static_cast<std::int32_t>(frequencies_.size());
  freedom_ = std::max(0, count * steps_ - 1 - 2 * count - (plan.tellsHarmonic() ? 2 : 0));
}

Decoder Decoder::under(const Conditions& conditions) const {
  Decoder decoder = *this;
  decoder.limits_.noise = conditions.noise;
  decoder.middle_ = conditions.middle;
  return decoder;
}

FRINGIX_STRIP_LOOPS void Decoder::decode(const StripSums& sums, DecodedStrip& decoded) const {
  Strip<float> turn;
  decoded.reason.fill(0);
  turnsOf(sums.frequencies[0], turn);
  fit(sums, decoded);
  judge(sums.levels, decoded);
  if (grayBits_ > 0) {
    countByGrayCode(*sums.gray, turn, decoded);
    if (middle_ > 0) compareWithWhite(sums.levels, *sums.gray, decoded);
  } else {
    countByFrequencies(sums.frequencies, turn, decoded);
  }
}

// The cosine of the finest frequency through the steps, by least squares, and what is left of their scatter.
void Decoder::fit(const StripSums& sums, DecodedStrip& decoded) const {
  const auto steps = static_cast<float>(steps_);
  const auto all = steps * static_cast<float>(frequencies_.size());
  const float twoByCount = 2 / steps;
  const LevelSums& levels = sums.levels;
  const float byFreedom = freedom_ > 0 ? 1.0F / static_cast<float>(freedom_) : 0.0F;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto total = static_cast<float>(levels.total[i]);
    decoded.offset[i] = total / all;
    decoded.misfit[i] = levels.squares[i] - total * decoded.offset[i];
  }
  for (std::size_t f = 0; f < frequencies_.size(); ++f) {
    for (std::size_t i = 0; i < stripLength; ++i) decoded.misfit[i] -= twoByCount * power(sums.frequencies[f], i);
  }
  if (sums.harmonic != nullptr) {
    for (std::size_t i = 0; i < stripLength; ++i) decoded.misfit[i] -= twoByCount * power(*sums.harmonic, i);
  }
  const auto period = static_cast<double>(frequencies_[0].period) / (2 * std::numbers::pi);
  const auto scale = static_cast<float>(period * period * 2.0 / steps);
  const auto constant = static_cast<float>(limits_.noise.constant());
  const auto perLevel = static_cast<float>(limits_.noise.variancePerLevel);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const float squaredModulation = twoByCount * twoByCount * power(sums.frequencies[0], i);
    decoded.misfit[i] *= byFreedom;
    decoded.modulation[i] = std::sqrt(squaredModulation);
    decoded.variance[i] = scale * (constant + perLevel * decoded.offset[i]) / (squaredModulation + 1e-12F);
  }
}

// What can be said without the period's number. A reason that is set later stands behind those that are set here.
void Decoder::judge(const LevelSums& sums, DecodedStrip& decoded) const {
  const auto period = static_cast<double>(frequencies_[0].period);
  const auto varianceLimit = static_cast<float>(period * period * limits_.periodShare * limits_.periodShare);
  const std::int32_t saturation = limits_.saturation;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto dim = static_cast<std::uint8_t>(decoded.variance[i] <= varianceLimit ? Reason::none : Reason::noise);
    decoded.reason[i] = sums.brightest[i] >= saturation ? static_cast<std::uint8_t>(Reason::saturation) : dim;
  }
}

namespace {

// At its borders the projector's blur mixes in the darkness outside, which moves the phase.
constexpr float borderColumns = 3;

// The reasons of one pixel that depend on the period's number, in their order.
struct Judgement {
  float width;
  float residual;
  float chance;
  float constant;
  float perLevel;
  float unsteadiness;

  std::int32_t operator()(bool uncertain, float rest, float column, const DecodedStrip& decoded, std::size_t i) const {
    const float harmonics = unsteadiness * decoded.modulation[i];
    const float misfitLimit = chance * (constant + perLevel * decoded.offset[i]) + harmonics * harmonics;
    std::int32_t reason = decoded.misfit[i] > misfitLimit ? static_cast<std::int32_t>(Reason::unsteady) : 0;
    reason = (column < borderColumns - 0.5F) | (column > width - borderColumns - 0.5F) ? static_cast<std::int32_t>(Reason::column) : reason;
    reason = size(rest) > residual ? static_cast<std::int32_t>(Reason::residual) : reason;
    reason = uncertain ? static_cast<std::int32_t>(Reason::grayMargin) : reason;
    return decoded.reason[i] != 0 ? decoded.reason[i] : reason;
  }
};

Judgement judgement(const DecodeLimits& limits, std::int32_t width, std::int32_t freedom) {
  return {static_cast<float>(width),
          static_cast<float>(limits.residual),
          freedom > 0 ? static_cast<float>(largestByChance(freedom)) : 0.0F,
          static_cast<float>(limits.noise.constant()),
          static_cast<float>(limits.noise.variancePerLevel),
          static_cast<float>(limits.unsteadiness)};
}

}  // namespace

// The code counts half periods, so that a bit misread at the border between two leaves the period right. A weak bit does no harm while
// both ways to read it name the same period; with a second weak bit nothing is sure.
void Decoder::countByGrayCode(const GraySums& sums, const Strip<float>& turn, DecodedStrip& decoded) const {
  const Judgement judge = judgement(limits_, width_, freedom_);
  const auto period = static_cast<float>(frequencies_[0].period);
  const auto factor = static_cast<float>(limits_.grayMargin * limits_.grayMargin);
  Strip<std::int32_t> reason;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto code = static_cast<std::int32_t>(sums.code[i]);
    const std::int32_t otherCode = code ^ sums.flip[i];
    const float halves = (static_cast<float>(code) + 0.5F) * 0.5F - turn[i];
    const float number = nearest(halves);
    const float otherNumber = nearest((static_cast<float>(otherCode) + 0.5F) * 0.5F - turn[i]);
    const float limit = factor * (judge.constant + judge.perLevel * decoded.offset[i]);
    const auto margin = static_cast<float>(sums.margin[i]);
    const auto second = static_cast<float>(sums.secondMargin[i]);
    const bool uncertain = (margin * margin < limit) & ((second * second < limit) | (number != otherNumber));
    const float column = period * (number + turn[i]) - 0.5F;
    decoded.column[i] = column;
    reason[i] = judge(uncertain, halves - number, column, decoded, i);
  }
  for (std::size_t i = 0; i < stripLength; ++i) decoded.reason[i] = static_cast<std::uint8_t>(reason[i]);
}

// The steps come last and the white picture first: where the one does not follow from the other, something came or went in between.
void Decoder::compareWithWhite(const LevelSums& levels, const GraySums& gray, DecodedStrip& decoded) const {
  constexpr float deviations = 5;
  constexpr float tolerance = 0.02F;  // of the light: the middle is rounded, and light may flicker
  const auto middle = static_cast<float>(middle_);
  const float terms = deviations * deviations * (1 / static_cast<float>(steps_) + middle * middle + (1 - middle) * (1 - middle));
  const auto constant = static_cast<float>(limits_.noise.constant());
  const auto perLevel = static_cast<float>(limits_.noise.variancePerLevel);
  constexpr auto unsteady = static_cast<std::uint8_t>(Reason::unsteady);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto white = static_cast<float>(levels.white[i]);
    const auto black = static_cast<float>(gray.black[i]);
    const float light = white - black;
    const float off = decoded.offset[i] - black - middle * light;
    const float limit = terms * (constant + perLevel * white) + tolerance * tolerance * light * light;
    decoded.reason[i] = (decoded.reason[i] == 0) & (off * off > limit) ? unsteady : decoded.reason[i];
  }
}

// Each frequency tells which period of the next finer one it is.
void Decoder::countByFrequencies(const FrequencySums* frequencies, const Strip<float>& turn, DecodedStrip& decoded) const {
  const Judgement judge = judgement(limits_, width_, freedom_);
  const auto period = static_cast<float>(frequencies_[0].period);
  const auto lead = static_cast<float>(frequencies_[0].lead);
  const auto finerPeriodsIn = [&](std::size_t i) { return frequencies_[i].period / frequencies_[i - 1].period; };
  const auto middleRatio = static_cast<float>(finerPeriodsIn(2));
  const auto fineRatio = static_cast<float>(finerPeriodsIn(1));
  Strip<float> coarse;
  Strip<float> middle;
  turnsOf(frequencies[2], coarse);
  turnsOf(frequencies[1], middle);
  Strip<std::int32_t> reason;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const float first = middleRatio * (coarse[i] < 0 ? coarse[i] + 1 : coarse[i]);
    const float second = fineRatio * (nearest(first - middle[i]) + middle[i]);
    const float number = nearest(second - turn[i]);
    const float firstRest = size(first - middle[i] - nearest(first - middle[i]));
    const float secondRest = size(second - turn[i] - number);
    const float column = period * (number + turn[i]) - 0.5F - lead;
    decoded.column[i] = column;
    reason[i] = judge(false, firstRest > secondRest ? firstRest : secondRest, column, decoded, i);
  }
  for (std::size_t i = 0; i < stripLength; ++i) decoded.reason[i] = static_cast<std::uint8_t>(reason[i]);
}

}  // namespace fringix::scan
