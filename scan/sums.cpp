#include "sums.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fringix::scan {

namespace {

using Pixels = const std::uint8_t*;

std::uint32_t addBrightness(Pixels pixels, Strip<std::uint8_t>& brightest) {
  std::uint32_t total = 0;
  for (std::size_t i = 0; i < stripLength; ++i) total += pixels[i];
  for (std::size_t i = 0; i < stripLength; ++i) brightest[i] = std::max(brightest[i], pixels[i]);
  return total;
}

// The bits come from the highest down: each bit of the number is the Gray bit, turned around when the number's last one was 1. A Gray
// bit that was misread turns around its own bit of the number and all below.
void addGray(Pixels pixels, std::int32_t bit, const LevelSums& levels, GraySums& sums) {
  const auto wrong = static_cast<std::uint16_t>((2U << static_cast<unsigned>(bit)) - 1U);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto difference = static_cast<std::int16_t>(2 * pixels[i] - levels.white[i] - sums.black[i]);
    const auto size = static_cast<std::int16_t>(difference < 0 ? -difference : difference);
    const auto one = static_cast<std::uint16_t>(difference > 0 ? 1 : 0);
    const bool weaker = size < sums.margin[i];
    const std::int16_t beaten = weaker ? sums.margin[i] : size;
    sums.code[i] = static_cast<std::uint16_t>(sums.code[i] + sums.code[i] + ((sums.code[i] & 1U) ^ one));
    sums.secondMargin[i] = sums.secondMargin[i] < beaten ? sums.secondMargin[i] : beaten;
    sums.flip[i] = weaker ? wrong : sums.flip[i];
    sums.margin[i] = weaker ? size : sums.margin[i];
  }
}

void addStep(Pixels pixels, const PictureRole& role, LevelSums& levels, FrequencySums& frequency) {
  const float cosineWeight = role.cosine;
  const float sineWeight = role.sine;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto level = static_cast<float>(pixels[i]);
    frequency.cosine[i] += cosineWeight * level;
    frequency.sine[i] += sineWeight * level;
    levels.squares[i] += level * level;
  }
  for (std::size_t i = 0; i < stripLength; ++i) levels.total[i] = static_cast<std::uint16_t>(levels.total[i] + pixels[i]);
}

// Whole numbers of 16 bits, of which a processor takes twice as many at once as of floats.
void addHarmonic(Pixels pixels, const PictureRole& role, HarmonicSums& sums) {
  const auto weightOf = [](float weight) { return static_cast<std::int16_t>(std::lround(HarmonicSums::weight * weight)); };
  const std::int16_t cosineWeight = weightOf(role.cosine * role.cosine - role.sine * role.sine);
  const std::int16_t sineWeight = weightOf(2 * role.cosine * role.sine);
  constexpr int half = 1 << (HarmonicSums::shift - 1);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const auto cosine = static_cast<std::int16_t>(cosineWeight * pixels[i] + half);
    const auto sine = static_cast<std::int16_t>(sineWeight * pixels[i] + half);
    sums.cosine[i] = static_cast<std::int16_t>(sums.cosine[i] + (cosine >> HarmonicSums::shift));
    sums.sine[i] = static_cast<std::int16_t>(sums.sine[i] + (sine >> HarmonicSums::shift));
  }
}

GraySums emptyGray() {
  GraySums sums{};
  sums.margin.fill(std::numeric_limits<std::int16_t>::max());
  sums.secondMargin.fill(std::numeric_limits<std::int16_t>::max());
  return sums;
}

}  // namespace

SumsOfStrips::SumsOfStrips(const Plan& plan, std::size_t strips)
    : frequencyCount_(plan.frequencies().size()),
      levels_(strips),
      gray_(plan.grayBits() > 0 ? strips : 0, emptyGray()),
      harmonic_(plan.tellsHarmonic() ? strips : 0),
      frequencies_(strips * frequencyCount_) {}

void SumsOfStrips::clear() noexcept {
  std::fill(levels_.begin(), levels_.end(), LevelSums{});
  std::fill(gray_.begin(), gray_.end(), emptyGray());
  std::fill(harmonic_.begin(), harmonic_.end(), HarmonicSums{});
  std::fill(frequencies_.begin(), frequencies_.end(), FrequencySums{});
}

FRINGIX_STRIP_LOOPS std::uint32_t add(const PictureRole& role, const std::uint8_t* pixels, const StripSums& sums) {
  switch (role.kind) {
    case PictureKind::white:
      std::copy_n(pixels, stripLength, sums.levels.white.data());
      break;
    case PictureKind::black:
      if (sums.gray != nullptr) std::copy_n(pixels, stripLength, sums.gray->black.data());
      break;
    case PictureKind::gray:
      addGray(pixels, role.number, sums.levels, *sums.gray);
      break;
    case PictureKind::phase:
      addStep(pixels, role, sums.levels, sums.frequencies[role.frequency]);
      if (sums.harmonic != nullptr) addHarmonic(pixels, role, *sums.harmonic);
      break;
  }
  return addBrightness(pixels, sums.levels.brightest);
}

}  // namespace fringix::scan
