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
  int CheckSystem(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int GetTemperature(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int ShowImage24(const std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ShowImage8(const std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ShowFromSeq(std::uint32_t, std::uint32_t) override { return SLSYSTEM_ERROR; }
  int GetLEDPowerMinMax(std::int32_t*, std::int32_t*) override { return SLSYSTEM_ERROR; }
  int StartMeasurement(std::uint32_t) override { return SLSYSTEM_ERROR; }
  int StartFromTo(std::uint32_t, std::uint32_t, std::uint32_t) override { return SLSYSTEM_ERROR; }
  int SetLEDPower(std::int32_t) override { return SLSYSTEM_ERROR; }
  int GetLEDPower(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int GetBrightnessMinMax(std::int32_t*, std::int32_t*) override { return SLSYSTEM_ERROR; }
  int SetBrightnessLevel(std::int32_t) override { return SLSYSTEM_ERROR; }
  int GetBrightnessLevel(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int GetGainMinMax(std::int32_t*, std::int32_t*) override { return SLSYSTEM_ERROR; }
  int SetGain(std::int32_t) override { return SLSYSTEM_ERROR; }
  int GetGain(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int SaveData(const std::uint8_t*, std::int32_t, const char*) override { return SLSYSTEM_ERROR; }
  int LoadData(std::uint8_t**, std::int32_t*, const char*) override { return SLSYSTEM_ERROR; }
  int ReadIniInt(std::int32_t*, const char*, const char*) override { return SLSYSTEM_ERROR; }
  int WriteIniInt(std::int32_t, const char*, const char*) override { return SLSYSTEM_ERROR; }
  int SetOutputSettings(std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ExecOutput(std::int32_t) override { return SLSYSTEM_ERROR; }
  int GetGPIOStatus(std::int32_t, std::int32_t*) override { return SLSYSTEM_ERROR; }
  int SetGPIOValue(std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ExecRS232(const char*, char*, std::int32_t) override { return SLSYSTEM_ERROR; }
  int GetUptime(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int GetProjectorTemperature(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int GetProjectorStatus(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int SetDMDState(std::int32_t) override { return SLSYSTEM_ERROR; }
  int GetCurrentExposure(std::int32_t*) override { return SLSYSTEM_ERROR; }
  int SetMask(const std::uint8_t*, std::int32_t, std::int32_t, std::int32_t) override { return SLSYSTEM_ERROR; }
  int ClearMask() override { return SLSYSTEM_ERROR; }
  int ExecProjCmd(std::uint8_t, std::uint8_t, std::uint8_t*, std::uint8_t*, std::uint8_t*) override { return SLSYSTEM_ERROR; }
  int SetLedPowerValue(std::uint8_t) override { return SLSYSTEM_ERROR; }
};

}  // namespace fringix
