#include "plan.h"

#include <cmath>
#include <numbers>
#include <string>

#include "failure.h"

namespace fringix::scan {

namespace {

constexpr std::int32_t frequencyRatio = 8;  // between neighbours of the three frequencies
constexpr std::int32_t coarsest = frequencyRatio * frequencyRatio;
constexpr std::int32_t mostSteps = 64;
static_assert(2 + 3 * mostSteps <= 256, "a head numbers pictures with one byte");

constexpr std::int32_t least = 16;
constexpr std::int32_t widest = 16384;

// The coarsest period must not close at the borders, where noise would throw a column to the other side.
constexpr std::int32_t withGuard(std::int32_t width) { return width + (width + 24) / 25; }

void require(bool condition, const std::string& text) {
  if (!condition) throw Failure(Status::badParameter, "plan: " + text);
}

void check(const PlanSettings& settings) {
  const std::string period = "a period of " + std::to_string(settings.period) + " columns";
  require(settings.method == Method::grayAndPhase || settings.method == Method::threeFrequencies, "the method is unknown");
  require(settings.projectorWidth >= least && settings.projectorWidth <= widest,
          "a projector of " + std::to_string(settings.projectorWidth) + " columns; 16 to 16384 are possible");
  require(settings.steps >= 3 && settings.steps <= mostSteps, std::to_string(settings.steps) + " steps; 3 to 64 are possible");
  require(settings.period >= 4 && settings.period <= settings.projectorWidth, period + "; 4 to the projector's width are possible");
  require(settings.method == Method::grayAndPhase || settings.period * coarsest >= withGuard(settings.projectorWidth),
          period + " is too short for three frequencies: 64 of them have to cover the projector's width and a guard of 4 %");
}

std::int32_t bitsFor(std::int32_t numbers) {
  std::int32_t bits = 0;
  while ((1 << bits) < numbers) ++bits;
  return bits;
}

// Half periods that begin inside of the projector's width.
std::int32_t halfPeriods(const PlanSettings& settings) { return (2 * settings.projectorWidth + settings.period - 1) / settings.period; }

}  // namespace

PlanSettings defaultSettings(Method method, std::int32_t projectorWidth) {
  if (method == Method::grayAndPhase) return {method, projectorWidth, 10, 10};
  return {method, projectorWidth, std::max(4, (withGuard(projectorWidth) + coarsest - 1) / coarsest), 6};
}

Plan::Plan(const PlanSettings& settings) : settings_(settings) {
  check(settings);
  frequencies_ = {{settings.period, 0}};
  if (settings.method == Method::grayAndPhase) {
    grayBits_ = bitsFor(halfPeriods(settings));
  } else {
    const double lead = (settings.period * coarsest - settings.projectorWidth) / 2.0;
    frequencies_ = {{settings.period, lead}, {settings.period * frequencyRatio, lead}, {settings.period * coarsest, lead}};
  }
  pictures_ = {{PictureKind::white}, {PictureKind::black}};
  for (std::int32_t bit = grayBits_ - 1; bit >= 0; --bit) pictures_.push_back({PictureKind::gray, 0, bit});
  for (auto frequency = static_cast<std::int32_t>(frequencies_.size()) - 1; frequency >= 0; --frequency) addSteps(frequency);
}

void Plan::addSteps(std::int32_t frequency) {
  for (std::int32_t step = 0; step < settings_.steps; ++step) {
    const double angle = 2 * std::numbers::pi * step / settings_.steps;
    pictures_.push_back({PictureKind::phase, frequency, step, static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))});
  }
}

std::uint8_t Plan::level(const PictureRole& role, std::int32_t column) const {
  if (role.kind == PictureKind::white) return 255;
  if (role.kind == PictureKind::black) return 0;
  if (role.kind == PictureKind::gray) {
    const std::int32_t number = (2 * column + 1) / settings_.period;
    return ((number ^ (number >> 1)) >> role.number & 1) != 0 ? 255 : 0;
  }
  const Frequency& frequency = frequencies_[static_cast<std::size_t>(role.frequency)];
  const double turns = (column + 0.5 + frequency.lead) / frequency.period - static_cast<double>(role.number) / settings_.steps;
  return static_cast<std::uint8_t>(std::lround(127.5 + 127.5 * std::cos(2 * std::numbers::pi * turns)));
}

std::vector<std::uint8_t> Plan::line(std::size_t picture) const {
  if (picture >= pictures_.size()) {
    throw Failure(Status::badParameter,
                  "plan: there is no picture " + std::to_string(picture) + ", the last is " + std::to_string(pictures_.size() - 1));
  }
  std::vector<std::uint8_t> line;
  for (std::int32_t column = 0; column < settings_.projectorWidth; ++column) line.push_back(level(pictures_[picture], column));
  return line;
}

}  // namespace fringix::scan
