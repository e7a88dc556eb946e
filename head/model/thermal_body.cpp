#include "head/model/thermal_body.h"

#include <cmath>

namespace fringix::head {

ThermalBody::ThermalBody(double temperature, std::chrono::seconds timeConstant, TimePoint now)
    : timeConstant_(timeConstant), since_(now), start_(temperature), target_(temperature) {}

void ThermalBody::setTarget(double target, TimePoint now) {
  start_ = temperature(now);
  since_ = now;
  target_ = target;
}

double ThermalBody::temperature(TimePoint now) const { return target_ + (start_ - target_) * std::exp(-((now - since_) / timeConstant_)); }

}  // namespace fringix::head
