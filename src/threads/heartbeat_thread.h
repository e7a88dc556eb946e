// Keeps an idle connection alive: wakes every 15 s and sends the keep-alive command when nothing was sent for more than 15 s, so that an
// idle connection sees one about every 30 s.
#pragma once

#include "threads/thread_mgr.h"

namespace fringix {

// The time that a heartbeat lives by.
class HeartbeatClock {
 public:
  virtual bool waitForStop(const platform::ManualResetEvent& stop, std::chrono::milliseconds limit) = 0;  // true: asked to stop
  virtual std::int64_t now() = 0;                                                                         // seconds since 1970

  static HeartbeatClock& ofTheSystem();

 protected:
  ~HeartbeatClock() = default;
};

class HeartbeatThread : public ThreadMgr {
 public:
  explicit HeartbeatThread(HeartbeatClock& clock = HeartbeatClock::ofTheSystem()) : clock_(clock) {}
  ~HeartbeatThread() override { Stop(); }

  std::int32_t ThreadProc() override;

 private:
  std::int32_t keepAlive();

  HeartbeatClock& clock_;
};

}  // namespace fringix
