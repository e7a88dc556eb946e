#include "benchmark/axis.h"

#include <algorithm>
#include <cmath>

#include "pictures/value_picture.h"

namespace fringix::tool {
namespace {

constexpr double alike = 10;
constexpr double margin = 0.03;
constexpr double mostTicks = 6;
constexpr double shortest = 1e-6;

}  // namespace

Axis::Axis(double least, double worst) : isEven_(worst < alike * least), low_(std::max(least, shortest)), high_(std::max(worst, low_)) {
  if (isEven_) {
    const double range = std::max(high_ - low_, 0.05 * high_);
    low_ = std::max(low_ - margin * range, 0.0);
    high_ += margin * range;
  } else {
    const double ratio = std::pow(high_ / low_, margin);
    low_ /= ratio;
    high_ *= ratio;
  }
}

double Axis::shareOf(double time) const {
  const double share = isEven_ ? (time - low_) / (high_ - low_) : std::log(std::max(time, low_) / low_) / std::log(high_ / low_);
  return std::clamp(share, 0.0, 1.0);
}

double Axis::timeAt(double share) const { return isEven_ ? low_ + share * (high_ - low_) : low_ * std::pow(high_ / low_, share); }

std::vector<Axis::Tick> Axis::ticks() const {
  std::vector<Tick> ticks;
  if (isEven_) {
    const double step = roundStep(high_ - low_, mostTicks);
    for (double i = std::ceil(low_ / step); i * step <= high_; ++i) ticks.push_back({i * step, step});
    return ticks;
  }
  for (double power = std::pow(10, std::floor(std::log10(low_))); power <= high_; power *= 10) {
    for (const double factor : {1.0, 2.0, 5.0})
      if (factor * power >= low_ && factor * power <= high_) ticks.push_back({factor * power, power});
  }
  return ticks;
}

}  // namespace fringix::tool
