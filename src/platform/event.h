// A manual-reset event: once set, every waiter passes until reset(). Safe to use from any number of threads.
#pragma once

#include <chrono>
#include <cstdint>

namespace fringix::platform {

class ManualResetEvent {
 public:
  using Native = std::intptr_t;  // what the system's wait for several things at once takes: an event handle, or a descriptor to poll

  ManualResetEvent();  // not set; throws std::system_error when the system has no event to give
  ~ManualResetEvent();
  ManualResetEvent(const ManualResetEvent&) = delete;
  ManualResetEvent& operator=(const ManualResetEvent&) = delete;

  void set() noexcept;
  void reset() noexcept;
  bool wait(std::chrono::milliseconds limit) const noexcept;  // true: set; false: the limit ran out
  Native native() const noexcept { return native_; }

 private:
  Native native_;
};

}  // namespace fringix::platform
