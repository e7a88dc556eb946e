// The operations that this version of the library has no command for: they fail, touch nothing, and no export leads to them.
#pragma once

#include "api/status.h"
#include "device/ICameraDevice.h"

namespace fringix {

class AbsentOperations : public ICameraDevice {
 public:
  void SetTriggerWindow(WindowHandle, std::uint32_t) override {}
  void SetGPIOCallback(TriggerCallback) override {}
  void SetContextCallback(TriggerCallback, void*) override {}
  int AddEventWindow(WindowHandle, std::uint32_t) override { return SLSYSTEM_ERROR; }
  int AddEventHandler(EventHandler, void*) override { return SLSYSTEM_ERROR; }
  int RemoveEventWindow(WindowHandle, std::uint32_t) override { return SLSYSTEM_ERROR; }
  int RemoveEventHandler(EventHandler, void*) override { return SLSYSTEM_ERROR; }
  int ShowImage24(const std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ShowImage8(const std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ShowFromSeq(std::uint32_t, std::uint32_t) override { return SLSYSTEM_ERROR; }
  int StartMeasurement(std::uint32_t) override { return SLSYSTEM_ERROR; }
  int StartFromTo(std::uint32_t, std::uint32_t, std::uint32_t) override { return SLSYSTEM_ERROR; }
};

}  // namespace fringix
