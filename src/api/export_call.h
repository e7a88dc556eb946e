// The frame around every export: entry trace, handle look-up, the call, exit trace; nothing that is thrown gets past it.
//
//   int32_t SLGetGain(int32_t handle, int32_t* gain) {
//     return ExportCall("SLGetGain", "%s, Parameter: %i, %p", handle, gain).device(handle, &ICameraDevice::GetGain, gain);
//   }
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>

#include "api/device_registry.h"
#include "diagnosis/status.h"
#include "diagnosis/trace.h"

namespace fringix {

class ExportCall {
 public:
  // The entry line: `format` gets the export's name and then the parameters.
  template <class... Parameters>
  ExportCall(const char* name, const char* format, Parameters... parameters) {
    trace(format, name, printable(parameters)...);
    nameFromNowOn(name);
  }

  // An export without an entry line.
  explicit ExportCall(const char* name) { nameFromNowOn(name); }

  ~ExportCall() {
    if (exitLine_) trace("Function %s finished", name_);
  }

  ExportCall(const ExportCall&) = delete;
  ExportCall& operator=(const ExportCall&) = delete;

  ExportCall& withoutExitLine() noexcept {
    exitLine_ = false;
    return *this;
  }

  // Calls `operation`, a member function of ICameraDevice or anything that takes one, on the session of `handle`.
  template <class Operation, class... Arguments>
  std::int32_t device(std::int32_t handle, Operation&& operation, Arguments... arguments) const {
    return guarded([&] {
      const std::shared_ptr<ICameraDevice> session = DeviceRegistry::instance().find(handle);  // the call's share of it
      return session == nullptr ? SLUNKNOWN_DEVICE_ID : std::invoke(operation, *session, arguments...);
    });
  }

  // Calls `body` and turns whatever it throws into a status code.
  template <class Body>
  std::int32_t guarded(Body&& body) const noexcept {
    try {
      return body();
    } catch (...) {
      return SLSYSTEM_ERROR;
    }
  }

 private:
  // The exit line bears the name only if tracing was on when the call began; kept on purpose.
  void nameFromNowOn(const char* name) noexcept { name_ = tracing() ? name : ""; }

  template <class Parameter>
  static auto printable(Parameter parameter) noexcept {
    if constexpr (std::is_same_v<Parameter, const char*>) {
      return parameter != nullptr ? parameter : "(null)";
    } else {
      return parameter;
    }
  }

  const char* name_ = "";
  bool exitLine_ = true;
};

// A pointer as "%i" prints it, where a trace format asks for that: the low 32 bits.
inline std::int32_t printedAsInteger(const void* pointer) noexcept {
  return static_cast<std::int32_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

// A function as "%p" prints it.
template <class Result, class... Parameters>
const void* printedAsPointer(Result (*function)(Parameters...)) noexcept {
  return reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(function));
}

// An integer as "%p" prints it.
inline const void* printedAsPointer(std::int32_t value) noexcept {
  return reinterpret_cast<const void*>(std::uintptr_t{static_cast<std::uint32_t>(value)});
}

}  // namespace fringix
