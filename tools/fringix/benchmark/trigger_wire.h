// A line of the head that is wired to its trigger input.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <mutex>
#include <optional>

namespace fringix::tool {

// While it lives, the line is used; then it has the state that it had.
class TriggerWire {
 public:
  using Clock = std::chrono::steady_clock;

  TriggerWire(const Device& head, std::int32_t line);
  ~TriggerWire();
  TriggerWire(const TriggerWire&) = delete;
  TriggerWire& operator=(const TriggerWire&) = delete;

  // Raises the line, and lowers it again; gives the time from before the command until the event was heard. Nothing when no event came
  // within `limit`.
  std::optional<Clock::duration> pull(std::chrono::milliseconds limit);

 private:
  void hear(std::int32_t event);

  const Device& head_;
  const std::int32_t line_;
  const std::int32_t before_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<Clock::time_point> heard_;
  Subscription subscription_;
};

}  // namespace fringix::tool
