// A clock that stands still until a test moves it.
#pragma once

#include <atomic>
#include <chrono>

#include "head/settings/clock.h"

namespace fringix::head {

class ManualClock {
 public:
  // The clock outlives the head that goes by it.
  Clock clock() {
    return [this] { return TimePoint(seconds_.load()); };
  }

  void advance(std::chrono::seconds time) { seconds_ = seconds_.load() + time; }

 private:
  std::atomic<std::chrono::seconds> seconds_{std::chrono::seconds(1000)};
};

}  // namespace fringix::head
