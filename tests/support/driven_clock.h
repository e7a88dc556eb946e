// A heartbeat's time, driven by a test: the heartbeat wakes when the test says so, at the time that the test sets.
#pragma once

#include <atomic>
#include <list>

#include "platform/clock.h"
#include "threads/heartbeat_thread.h"

namespace fringix::test {

class DrivenClock final : public HeartbeatClock {
 public:
  bool waitForStop(const platform::ManualResetEvent& stop, std::chrono::milliseconds limit) override {
    lastLimit = limit;
    ++waits;
    for (;;) {
      if (stop.wait(std::chrono::milliseconds(1))) return true;
      if (takeWakeUp()) return false;
    }
  }

  std::int64_t now() override {
    const std::int64_t time = platform::secondsSinceEpoch() + ahead;
    ++looks;  // last: a test that sees it may change the time
    return time;
  }

  // Wakes the heartbeat once, so many seconds after now.
  void wake(std::int64_t secondsAhead) {
    ahead = secondsAhead;
    ++pending_;
  }

  std::atomic<std::int64_t> ahead{0};
  std::atomic<std::chrono::milliseconds> lastLimit{};
  std::atomic<int> waits{0};
  std::atomic<int> looks{0};

 private:
  bool takeWakeUp() {
    int pending = pending_;
    while (pending > 0 && !pending_.compare_exchange_weak(pending, pending - 1)) {
    }
    return pending > 0;
  }

  std::atomic<int> pending_{0};
};

// One that a heartbeat may still hold when its test is over: whoever abandons a thread does not learn when it has ended.
inline DrivenClock& lastingClock() {
  static auto& all = *new std::list<DrivenClock>;
  return all.emplace_back();
}

}  // namespace fringix::test
