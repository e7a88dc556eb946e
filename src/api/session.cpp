// Opening and closing sessions.
#include <memory>

#include "api/export_call.h"
#include "device/camera_device.h"

using namespace fringix;

namespace {

constexpr std::uint32_t receiveTimeout = 30;  // seconds

int openSession(const char* address, int32_t* handle) {
  auto channel = std::make_unique<CommandChannel>();
  if (channel->Connect(address) != 0) return SLCONNECTION_ERROR;
  channel->socket()->setReceiveTimeout(receiveTimeout);
  auto session = CameraDevice::create();
  const int result = session->Init(std::move(channel));
  if (result == SLALL_OKAY) *handle = DeviceRegistry::instance().add(std::move(session));
  return result;
}

}  // namespace

int32_t SLDevAlloc(const char* address, int32_t* handle) {
  const ExportCall call("SLDevAlloc");  // no entry line; kept on purpose
  if (handle == nullptr) return SLBAD_PARAMETER;
  *handle = -1;
  if (address == nullptr) return SLBAD_PARAMETER;
  return call.guarded([&] { return openSession(address, handle); });
}

// Of several threads that free a session at once the first one does; the others wait for it and find none.
int32_t SLDevFree(int32_t handle) {
  return ExportCall("SLDevFree", "%s, Parameter: %i", handle).device(handle, [&](ICameraDevice& device) {
    const bool first = DeviceRegistry::instance().claim(handle);
    const int result = device.Close();
    DeviceRegistry::instance().remove(handle);  // whoever it is, nobody finds the session any more after its return
    return first ? result : SLUNKNOWN_DEVICE_ID;
  });
}

int32_t SLGetDevKey(int32_t handle, DeviceKeyEntry* key) {
  return ExportCall("SLGetDevKey", "%s, Parameter: %i, %p", handle, key).device(handle, [&](ICameraDevice& device) {
    return key == nullptr ? SLBAD_PARAMETER : device.GetDevKey(&key->ipAddress, &key->serial, &key->info1);
  });
}
