// Where a trigger ends: its handler notes the time and wakes whoever waits for it.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>

#include "descriptor.h"

namespace fringix::bench {

class TriggerArrival {
 public:
  TriggerArrival();

  void note();  // the handler

  // When the handler was entered, in seconds of CLOCK_MONOTONIC; nothing when that does not happen in time.
  std::optional<double> wait(std::chrono::milliseconds limit);

 private:
  Descriptor event_;
  std::atomic<double> time_ = 0;
};

}  // namespace fringix::bench
