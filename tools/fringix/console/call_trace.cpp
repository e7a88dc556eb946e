#include "console/call_trace.h"

#include <fmt/format.h>

#include <fringix/fringix.hpp>
#include <map>

#include "console/output.h"
#include "times/wall_time.h"

namespace fringix::tool {
namespace {

using SystemClock = std::chrono::system_clock;

std::string formatTime(WallTime time) { return localText(time, "%H:%M:%S") + millisecondText(time); }

// Asked for while nothing is traced: the library's text for a status leaves trace lines of its own.
const std::map<std::int32_t, std::string>& statusNames() {
  static const auto names = [] {
    std::map<std::int32_t, std::string> known;
    for (const std::int32_t status :
         {SLALL_OKAY, SLUNKNOWN_DEVICE_ID, SLBAD_PARAMETER, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLHANDSHAKE_TIMEOUT, SLUNKNOWN_SEQUENCE_ID,
          SLMEASUREMENT_FAILED, SLVERSION_MISMATCH, SLVERSION_TOO_OLD})
      known.emplace(status, statusName(status));
    return known;
  }();
  return names;
}

std::string nameOf(std::int32_t status) {
  const auto name = statusNames().find(status);
  return name == statusNames().end() ? "status" : name->second;
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
  statusNames();
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
