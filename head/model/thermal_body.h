// A part of the head that warms up and cools down.
#pragma once

#include <chrono>

#include "head/settings/clock.h"

namespace fringix::head {

// Of the way to its target, a temperature has e^(-t / timeConstant) still to go after the time t.
class ThermalBody {
 public:
  ThermalBody(double temperature, std::chrono::seconds timeConstant, TimePoint now);

  void setTarget(double target, TimePoint now);
  double temperature(TimePoint now) const;  // in degrees Celsius

 private:
  std::chrono::duration<double> timeConstant_;
  TimePoint since_;
  double start_;  // the temperature at `since_`
  double target_;
};

}  // namespace fringix::head
