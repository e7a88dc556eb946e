// Light, camera and projector settings, and the state of the head.
#include "api/export_call.h"

using namespace fringix;

int32_t SLCheckSystem(int32_t handle, int32_t* result) {
  return ExportCall("SLCheckSystem", "%s, Parameter: %i, %p", handle, result).device(handle, &ICameraDevice::CheckSystem, result);
}

int32_t SLGetTemperature(int32_t handle, int32_t* temperature) {
  return ExportCall("SLGetTemperature", "%s, Parameter: %i, %p", handle, temperature)
      .device(handle, &ICameraDevice::GetTemperature, temperature);
}

int32_t SLGetLEDPower(int32_t handle, int32_t* power) {
  return ExportCall("SLGetLEDPower", "%s, Parameter: %i, %p", handle, power).device(handle, &ICameraDevice::GetLEDPower, power);
}

int32_t SLSetLEDPower(int32_t handle, int32_t power) {
  return ExportCall("SLSetLEDPower", "%s, Parameter: %i, %i", handle, power).device(handle, &ICameraDevice::SetLEDPower, power);
}

int32_t SLGetLEDPowerMinMax(int32_t handle, int32_t* min, int32_t* max) {
  return ExportCall("SLGetLEDPowerMinMax", "%s, Parameter: %i, %p, %p", handle, min, max)
      .device(handle, &ICameraDevice::GetLEDPowerMinMax, min, max);
}

int32_t SLGetBrightnessLevel(int32_t handle, int32_t* level) {
  return ExportCall("SLGetBrightnessLevel", "%s, Parameter: %i, %p", handle, level)
      .device(handle, &ICameraDevice::GetBrightnessLevel, level);
}

int32_t SLSetBrightnessLevel(int32_t handle, int32_t level) {
  return ExportCall("SLSetBrightnessLevel", "%s, Parameter: %i, %i", handle, level)
      .device(handle, &ICameraDevice::SetBrightnessLevel, level);
}

int32_t SLGetBrightnessMinMax(int32_t handle, int32_t* min, int32_t* max) {
  return ExportCall("SLGetBrightnessMinMax", "%s, Parameter: %i, %p, %p", handle, min, max)
      .device(handle, &ICameraDevice::GetBrightnessMinMax, min, max);
}

int32_t SLGetGain(int32_t handle, int32_t* gain) {
  return ExportCall("SLGetGain", "%s, Parameter: %i, %p", handle, gain).device(handle, &ICameraDevice::GetGain, gain);
}

int32_t SLSetGain(int32_t handle, int32_t gain) {
  return ExportCall("SLSetGain", "%s, Parameter: %i, %i", handle, gain).device(handle, &ICameraDevice::SetGain, gain);
}

int32_t SLGetGainMinMax(int32_t handle, int32_t* min, int32_t* max) {
  return ExportCall("SLGetGainMinMax", "%s, Parameter: %i, %p, %p", handle, min, max)
      .device(handle, &ICameraDevice::GetGainMinMax, min, max);
}

int32_t SLGetCurrentExposure(int32_t handle, int32_t* exposure) {
  return ExportCall("SLGetCurrentExposure", "%s, Parameter: %i, %p", handle, exposure)
      .device(handle, &ICameraDevice::GetCurrentExposure, exposure);
}

int32_t SLGetUptime(int32_t handle, int32_t* uptime) {
  return ExportCall("SLGetUptime", "%s, Parameter: %i, %p", handle, uptime).device(handle, &ICameraDevice::GetUptime, uptime);
}

int32_t SLGetProjectorTemperature(int32_t handle, int32_t* temperature) {
  return ExportCall("SLGetProjectorTemperature", "%s, Parameter: %i, %p", handle, temperature)
      .device(handle, &ICameraDevice::GetProjectorTemperature, temperature);
}

int32_t SLGetProjectorStatus(int32_t handle, int32_t* status) {
  return ExportCall("SLGetProjectorStatus", "%s, Parameter: %i, %p", handle, status)
      .device(handle, &ICameraDevice::GetProjectorStatus, status);
}

int32_t SLSetDMDState(int32_t handle, int32_t state) {
  return ExportCall("SLSetDMDState", "%s, Parameter: %i, %i", handle, state).device(handle, &ICameraDevice::SetDMDState, state);
}

// The trace has no commas, on purpose.
int32_t SLSetMask(int32_t handle, const uint8_t* mask, int32_t selector, int32_t width, int32_t height) {
  return ExportCall("SLSetMask", "%s, Parameter: %i %p %i %i %i", handle, mask, selector, width, height)
      .device(handle, &ICameraDevice::SetMask, mask, selector, width, height);
}

int32_t SLClearMask(int32_t handle) {
  return ExportCall("SLClearMask", "%s, Parameter: %i", handle).device(handle, &ICameraDevice::ClearMask);
}

// The trace shows the value and not the handle, on purpose.
int32_t SLSetLedPowerValue(int32_t handle, uint8_t value) {
  return ExportCall("SLSetLedPowerValue", "%s, Parameter: %i", value).device(handle, &ICameraDevice::SetLedPowerValue, value);
}
