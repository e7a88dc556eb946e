// Base of the worker threads: owns one worker and the event that asks it to stop.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/event.h"
#include "platform/worker.h"

namespace fringix {

class ICameraDevice;

class ThreadMgr {
 public:
  ThreadMgr() = default;
  virtual ~ThreadMgr();
  ThreadMgr(const ThreadMgr&) = delete;
  ThreadMgr& operator=(const ThreadMgr&) = delete;

  // The worker's body; its result is the exit code of the thread, which nobody reads.
  virtual std::int32_t ThreadProc() = 0;

  void setDevice(ICameraDevice* device) noexcept { device_ = device; }  // borrowed; while no worker runs

  // Start and Stop must not overlap: the owner calls both under a lock of its own.
  // Stops a worker that may still run and starts a new one. 0, or the system's error code. `share` keeps alive what an abandoned
  // worker may still touch.
  std::uint32_t Start(std::shared_ptr<void> share = {});

  // Asks the worker to stop and waits up to 2000 ms. 0 when it ended by itself or none ran; 1 when it had to be ended by force or
  // abandoned.
  int Stop();

 protected:
  ICameraDevice* device() const noexcept { return device_; }
  const platform::ManualResetEvent& stopEvent() const noexcept { return stopEvent_; }

 private:
  ICameraDevice* device_ = nullptr;
  platform::Worker thread_;
  platform::ManualResetEvent stopEvent_;
};

}  // namespace fringix
