// The axis of times of a diagram.
#pragma once

#include <vector>

namespace fringix::tool {

// Even where the times are alike; where they differ by more, equal ratios are equally far apart.
class Axis {
 public:
  Axis(double least, double worst);  // both above 0

  double shareOf(double time) const;  // 0 at its beginning, 1 at its end
  double timeAt(double share) const;

  struct Tick {
    double time;
    double spacing;  // about, to the next one: how exact a label has to be
  };
  std::vector<Tick> ticks() const;  // at round times

 private:
  bool isEven_;
  double low_;
  double high_;
};

}  // namespace fringix::tool
