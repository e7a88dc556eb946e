// Who is told of triggers and events.
#include "api/export_call.h"

using namespace fringix;

int32_t SLRegisterGPIOCallback(int32_t handle, SLGPIOCallback callback) {
  return ExportCall("SLRegisterGPIOCallback", "%s, Parameter: %i, %p", handle, printedAsPointer(callback))
      .device(handle, [&](ICameraDevice& device) {
        device.SetGPIOCallback(callback);
        return SLALL_OKAY;
      });
}

// The window gets the events with number and serial, not the bare trigger message; kept on purpose.
int32_t SLRegisterGPIOHandle(int32_t handle, void* window, int32_t message) {
  return ExportCall("SLRegisterGPIOHandle", "%s, Parameter: %i, %p, %i", handle, window, message)
      .device(handle, &ICameraDevice::AddEventWindow, window, static_cast<std::uint32_t>(message));
}

// These two trace their entry only, and without the comma after the handle, on purpose.
int32_t SLRegisterEventhandler(int32_t handle, SLEventHandler handler, void* context) {
  return ExportCall("SLRegisterEventhandler", "%s, Parameter: %i %p, %p", handle, printedAsPointer(handler), context)
      .withoutExitLine()
      .device(handle, &ICameraDevice::AddEventHandler, handler, context);
}

int32_t SLUnregisterEventhandler(int32_t handle, SLEventHandler handler, void* context) {
  return ExportCall("SLUnregisterEventhandler", "%s, Parameter: %i %p, %p", handle, printedAsPointer(handler), context)
      .withoutExitLine()
      .device(handle, &ICameraDevice::RemoveEventHandler, handler, context);
}
