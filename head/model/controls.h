// The lamp's and the cameras' settings, and what the head measures of itself. docs/simulated-head.md gives the units.
#pragma once

#include <cstdint>
#include <mutex>

#include "head/model/thermal_body.h"
#include "head/settings/clock.h"
#include "head/settings/range.h"
#include "head/settings/status.h"

namespace fringix::head {

// Safe to use from several threads.
class Controls {
 public:
  static constexpr Range ledPowerRange{10, 200};  // what the LED bears for ever
  static constexpr Range directLedPowerRange{0, 255};
  static constexpr Range brightnessRange{0, 9};  // 9 is the full light
  static constexpr Range gainRange{10, 100};     // in tenths

  explicit Controls(Clock clock);  // the head is switched on now

  Status setLedPower(std::int32_t power);
  Status setLedPowerDirectly(std::int32_t power);  // the same setting, within the LED driver's range
  std::int32_t ledPower() const;
  Status setBrightnessLevel(std::int32_t level);
  std::int32_t brightnessLevel() const;
  Status setGain(std::int32_t gain);
  std::int32_t gain() const;

  double lampStrength() const;  // of power and level together; 1 at the start
  double gainFactor() const;    // 1 at the start

  std::int32_t uptime() const;                // in seconds
  std::int32_t cameraTemperature() const;     // in degrees Celsius
  std::int32_t projectorTemperature() const;  // likewise

 private:
  Status setPowerWithin(const Range& range, std::int32_t power);
  void warmUp();
  std::int32_t degrees(const ThermalBody& body) const;

  const Clock clock_;
  const TimePoint start_;
  mutable std::mutex mutex_;
  std::int32_t ledPower_;
  std::int32_t brightnessLevel_ = brightnessRange.high;
  std::int32_t gain_;
  ThermalBody camera_;
  ThermalBody projector_;
};

}  // namespace fringix::head
