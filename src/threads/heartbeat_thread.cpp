#include "threads/heartbeat_thread.h"

#include "device/ICameraDevice.h"
#include "diagnosis/trace.h"
#include "platform/clock.h"

namespace fringix {

namespace {

constexpr std::chrono::milliseconds period{15000};
constexpr std::int64_t longestSilence = 15;  // seconds

enum EndCode : std::int32_t { stopped = 0, noDevice = -1, noConnection = -2, noKeepAlive = -3, noMemory = -4 };

class SystemClock final : public HeartbeatClock {
 public:
  bool waitForStop(const platform::ManualResetEvent& stop, std::chrono::milliseconds limit) override { return stop.wait(limit); }
  std::int64_t now() override { return platform::secondsSinceEpoch(); }
};

}  // namespace

HeartbeatClock& HeartbeatClock::ofTheSystem() {
  static SystemClock clock;
  return clock;
}

std::int32_t HeartbeatThread::ThreadProc() {
  trace("HeartbeatThread: ThreadProc started");
  if (device() == nullptr) return noDevice;
  try {
    return keepAlive();
  } catch (...) {
    return noMemory;  // nothing else is thrown; the session goes on without
  }
}

std::int32_t HeartbeatThread::keepAlive() {
  // A wait that fails looks like one that timed out, and the loop goes on; kept on purpose.
  while (!clock_.waitForStop(stopEvent(), period)) {
    std::int64_t lastSend = 0;
    if (device()->GetLastSendTime(&lastSend) != 0) return noConnection;
    if (clock_.now() - lastSend > longestSilence && device()->Noop() != 0) return noKeepAlive;
    if (platform::thisWorkerIsAbandoned()) return noConnection;
  }
  trace("HeartbeatThread: returning from ThreadProc");
  return stopped;
}

}  // namespace fringix
