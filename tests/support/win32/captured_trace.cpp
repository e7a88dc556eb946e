#include "support/captured_trace.h"

#include <windows.h>

#include <mutex>

namespace fringix::test {

namespace {

// What OutputDebugStringA raises for a debugger: the length and the text.
constexpr DWORD debugPrintException = 0x40010006;

std::mutex mutex;
std::vector<std::string> captured;

LONG CALLBACK collect(EXCEPTION_POINTERS* information) {
  const EXCEPTION_RECORD& record = *information->ExceptionRecord;
  if (record.ExceptionCode == debugPrintException && record.NumberParameters >= 2) {
    const std::lock_guard guard(mutex);
    captured.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

struct CapturedTrace::Native {
  void* handler = AddVectoredExceptionHandler(1, collect);
};

CapturedTrace::CapturedTrace() : native_(std::make_unique<Native>()) {
  const std::lock_guard guard(mutex);
  captured.clear();
}

CapturedTrace::~CapturedTrace() { RemoveVectoredExceptionHandler(native_->handler); }

std::vector<std::string> CapturedTrace::lines() {
  const std::lock_guard guard(mutex);
  return captured;
}

}  // namespace fringix::test
