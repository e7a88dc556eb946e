// What a session does with triggers, and who is told of them. Registrations outlive the connection.
#include "device/camera_device.h"

namespace fringix {

void CameraDevice::OnTrigger() {
  std::int32_t serial = 0;
  if (GetSerial(&serial) == SLALL_OKAY) events_.FireEvent(triggerRaised, serial);
}

void CameraDevice::SetTriggerWindow(WindowHandle window, std::uint32_t message) { listener_.setNotifyWindow(window, message); }
void CameraDevice::SetGPIOCallback(TriggerCallback callback) { listener_.setGpioCallback(callback); }
void CameraDevice::SetContextCallback(TriggerCallback callback, void* context) { listener_.setContextCallback(callback, context); }

int CameraDevice::AddEventWindow(WindowHandle window, std::uint32_t message) {
  events_.addWindow(window, message);
  return SLALL_OKAY;
}

int CameraDevice::AddEventHandler(EventHandler handler, void* context) {
  events_.addHandler(handler, context);
  return SLALL_OKAY;
}

int CameraDevice::RemoveEventWindow(WindowHandle window, std::uint32_t message) {
  events_.removeWindow(window, message);
  return SLALL_OKAY;
}

int CameraDevice::RemoveEventHandler(EventHandler handler, void* context) {
  events_.removeHandler(handler, context);
  return SLALL_OKAY;
}

}  // namespace fringix
