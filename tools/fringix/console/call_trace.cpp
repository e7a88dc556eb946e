#include "console/call_trace.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <fringix/fringix.hpp>

#include "console/output.h"

namespace fringix::tool {
namespace {

using SystemClock = std::chrono::system_clock;

std::string formatTime(SystemClock::time_point time) {
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  return fmt::format("{:%H:%M:%S}.{:03}", fmt::localtime(SystemClock::to_time_t(second)), (time - second) / std::chrono::milliseconds(1));
}

// The library's own text for a status would leave trace lines of its own.
const char* nameOf(std::int32_t status) {
  switch (status) {
    case SLALL_OKAY:
      return "SLALL_OKAY";
    case SLUNKNOWN_DEVICE_ID:
      return "SLUNKNOWN_DEVICE_ID";
    case SLBAD_PARAMETER:
      return "SLBAD_PARAMETER";
    case SLSYSTEM_ERROR:
      return "SLSYSTEM_ERROR";
    case SLCONNECTION_ERROR:
      return "SLCONNECTION_ERROR";
    case SLHANDSHAKE_TIMEOUT:
      return "SLHANDSHAKE_TIMEOUT";
    case SLUNKNOWN_SEQUENCE_ID:
      return "SLUNKNOWN_SEQUENCE_ID";
    case SLMEASUREMENT_FAILED:
      return "SLMEASUREMENT_FAILED";
    case SLVERSION_MISMATCH:
      return "SLVERSION_MISMATCH";
    case SLVERSION_TOO_OLD:
      return "SLVERSION_TOO_OLD";
    default:
      return "status";
  }
}

// No call is made within another one on the same thread.
thread_local std::chrono::steady_clock::time_point begun;

class CallTrace final : public CallObserver {
 public:
  void begins(const char* operation) noexcept override {
    tellWhatFits([&] { return formatCallBegin(SystemClock::now(), operation); });
    begun = std::chrono::steady_clock::now();
  }
  void ends(const char* operation, std::int32_t status) noexcept override {
    const auto duration = std::chrono::steady_clock::now() - begun;
    tellWhatFits([&] { return formatCallEnd(SystemClock::now(), operation, status, duration); });
  }

 private:
  template <class Format>
  static void tellWhatFits(Format&& format) noexcept {
    try {
      tell(format());
    } catch (...) {  // a trace is no reason to fail
    }
  }
};

CallTrace callTrace;

}  // namespace

void traceCalls() {
  observeCalls(&callTrace);
  setTracing(true);
}

std::string formatCallBegin(SystemClock::time_point time, const char* operation) {
  return fmt::format("{} {}", formatTime(time), operation);
}

std::string formatCallEnd(SystemClock::time_point time, const char* operation, std::int32_t status,
                          std::chrono::duration<double, std::milli> duration) {
  return fmt::format("{} {}: {} ({}) after {:.1f} ms", formatTime(time), operation, nameOf(status), status, duration.count());
}

}  // namespace fringix::tool
