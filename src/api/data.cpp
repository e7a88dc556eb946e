// Data blocks, configuration values, lines, and commands passed through.
#include <string>

#include "api/export_call.h"
#include "platform/block_memory.h"

using namespace fringix;

int32_t SLSaveData(int32_t handle, const uint8_t* data, int32_t size, const char* fileName) {
  return ExportCall("SLSaveData", "%s, Parameter: %i, %p, %i, %s", handle, data, size, fileName)
      .device(handle, &ICameraDevice::SaveData, data, size, fileName);
}

int32_t SLLoadData(int32_t handle, uint8_t** data, int32_t* size, const char* fileName) {
  return ExportCall("SLLoadData", "%s, Parameter: %i, %p, %p, %s", handle, data, size, fileName)
      .device(handle, &ICameraDevice::LoadData, data, size, fileName);
}

int32_t SLFreeData(uint8_t* data) {
  const ExportCall call("SLFreeData", "%s, Parameter: %p", data);
  platform::freeBlock(data);
  return SLALL_OKAY;
}

int32_t SLReadIniInt(int32_t handle, int32_t* value, const char* section, const char* key) {
  return ExportCall("SLReadIniInt", "%s, Parameter: %i, %p, %s, %s", handle, value, section, key)
      .device(handle, &ICameraDevice::ReadIniInt, value, section, key);
}

// The trace shows the value in a pointer's place, on purpose.
int32_t SLWriteIniInt(int32_t handle, int32_t value, const char* section, const char* key) {
  return ExportCall("SLWriteIniInt", "%s, Parameter: %i, %p, %s, %s", handle, printedAsPointer(value), section, key)
      .device(handle, &ICameraDevice::WriteIniInt, value, section, key);
}

// The trace has a text's place for the handle.
int32_t SLExecRS232(int32_t handle, const char* command, char* reply, int32_t replySize) {
  return ExportCall("SLExecRS232", "%s, Parameter: %s, %s", std::to_string(handle).c_str(), command)
      .device(handle, &ICameraDevice::ExecRS232, command, reply, replySize);
}

// The trace leaves the handle out, on purpose.
int32_t SLExecProjCmd(int32_t handle, uint8_t command, uint8_t argument, uint8_t* result1, uint8_t* result2, uint8_t* result3) {
  return ExportCall("SLExecProjCmd", "%s, Parameter: %i %i %p %p %p", command, argument, result1, result2, result3)
      .device(handle, &ICameraDevice::ExecProjCmd, command, argument, result1, result2, result3);
}

int32_t SLGetGPIOStatus(int32_t handle, int32_t line, int32_t* state) {
  return ExportCall("SLGetGPIOStatus", "%s, Parameter: %i, %i, %p", handle, line, state)
      .device(handle, &ICameraDevice::GetGPIOStatus, line, state);
}

int32_t SLSetGPIOValue(int32_t handle, int32_t line, int32_t value) {
  return ExportCall("SLSetGPIOValue", "%s, Parameter: %i, %i, %i", handle, line, value)
      .device(handle, &ICameraDevice::SetGPIOValue, line, value);
}
