#include "head/model/controls.h"

#include <chrono>
#include <cmath>
#include <utility>

namespace fringix::head {

namespace {

constexpr std::int32_t usualLedPower = 100;
constexpr std::int32_t usualGain = 10;

constexpr double roomTemperature = 22;
constexpr double darkTemperature = 30;  // of a head that is on, without light
constexpr double cameraDegreesPerPower = 0.12;
constexpr double projectorDegreesPerPower = 0.24;
constexpr std::chrono::minutes cameraTimeConstant{10};
constexpr std::chrono::minutes projectorTimeConstant{2};

Status setWithin(const Range& range, std::int32_t& setting, std::int32_t value) {
  if (!range.contains(value)) return Status::badParameter;
  setting = value;
  return Status::ok;
}

}  // namespace

Controls::Controls(Clock clock)
    : clock_(std::move(clock)),
      start_(clock_()),
      ledPower_(usualLedPower),
      gain_(usualGain),
      camera_(roomTemperature, cameraTimeConstant, start_),
      projector_(roomTemperature, projectorTimeConstant, start_) {
  warmUp();
}

Status Controls::setLedPower(std::int32_t power) { return setPowerWithin(ledPowerRange, power); }

Status Controls::setLedPowerDirectly(std::int32_t power) { return setPowerWithin(directLedPowerRange, power); }

Status Controls::setPowerWithin(const Range& range, std::int32_t power) {
  const std::lock_guard lock(mutex_);
  const Status status = setWithin(range, ledPower_, power);
  if (status == Status::ok) warmUp();
  return status;
}

void Controls::warmUp() {
  const TimePoint now = clock_();
  camera_.setTarget(darkTemperature + cameraDegreesPerPower * ledPower_, now);
  projector_.setTarget(darkTemperature + projectorDegreesPerPower * ledPower_, now);
}

std::int32_t Controls::ledPower() const {
  const std::lock_guard lock(mutex_);
  return ledPower_;
}

Status Controls::setBrightnessLevel(std::int32_t level) {
  const std::lock_guard lock(mutex_);
  return setWithin(brightnessRange, brightnessLevel_, level);
}

std::int32_t Controls::brightnessLevel() const {
  const std::lock_guard lock(mutex_);
  return brightnessLevel_;
}

Status Controls::setGain(std::int32_t gain) {
  const std::lock_guard lock(mutex_);
  return setWithin(gainRange, gain_, gain);
}

std::int32_t Controls::gain() const {
  const std::lock_guard lock(mutex_);
  return gain_;
}

double Controls::lampStrength() const {
  const std::lock_guard lock(mutex_);
  return static_cast<double>(ledPower_) / usualLedPower * (brightnessLevel_ + 1) / (brightnessRange.high + 1);
}

double Controls::gainFactor() const { return static_cast<double>(gain()) / usualGain; }

std::int32_t Controls::uptime() const {
  return static_cast<std::int32_t>(std::chrono::duration_cast<std::chrono::seconds>(clock_() - start_).count());
}

std::int32_t Controls::cameraTemperature() const { return degrees(camera_); }

std::int32_t Controls::projectorTemperature() const { return degrees(projector_); }

std::int32_t Controls::degrees(const ThermalBody& body) const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::int32_t>(std::lround(body.temperature(clock_())));
}

}  // namespace fringix::head
