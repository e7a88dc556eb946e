// A part of a benchmark: its samples, and when it has enough of them.
#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "console/interruption.h"

namespace fringix::tool {

class Part {
 public:
  using Clock = std::chrono::steady_clock;

  Part(Clock::time_point until, const Interruption& interruption) : until_(until), interruption_(interruption) {}

  // Whether one more sample is wanted: the first one always, others until the time is over or Ctrl-C is pressed.
  bool goesOn() const {
    const bool enough = !samples_.empty() && (Clock::now() >= until_ || samples_.size() >= most);
    return !enough && !isEnded();
  }
  bool isEnded() const { return interruption_.waitFor({}); }  // by Ctrl-C

  void note(Clock::duration time) { samples_.push_back(std::chrono::duration<double, std::milli>(time).count()); }

  // The first call is not counted, nor its time: a head, or the system, may prepare something then.
  template <class Call>
  void repeat(Call call) {
    const Clock::time_point begin = Clock::now();
    if (!isEnded()) call();
    uncounted_ = Clock::now() - begin;
    until_ += uncounted_;
    while (goesOn()) {
      const Clock::time_point start = Clock::now();
      call();
      note(Clock::now() - start);
    }
  }

  void lose() { ++lost_; }  // a sample that never came

  std::vector<double>& samples() { return samples_; }  // in milliseconds
  std::size_t lost() const { return lost_; }
  Clock::duration uncounted() const { return uncounted_; }

 private:
  static constexpr std::size_t most = 1'000'000;

  Clock::time_point until_;
  const Interruption& interruption_;
  std::vector<double> samples_;
  std::size_t lost_ = 0;
  Clock::duration uncounted_{};
};

}  // namespace fringix::tool
