#include "api/device_registry.h"

namespace fringix {

DeviceRegistry& DeviceRegistry::instance() {
  static DeviceRegistry registry;
  return registry;
}

ICameraDevice*& DeviceRegistry::entry(std::int32_t handle) {
  const auto place = sessions_.lower_bound(handle);
  if (place != sessions_.end() && place->first == handle) return place->second;
  return sessions_.emplace_hint(place, handle, nullptr)->second;
}

std::int32_t DeviceRegistry::add(std::unique_ptr<ICameraDevice> session) {
  ICameraDevice*& place = entry(nextHandle_);  // may throw, and the session is still owned then
  place = session.release();
  return nextHandle_++;
}

std::unique_ptr<ICameraDevice> DeviceRegistry::remove(std::int32_t handle) {
  std::unique_ptr<ICameraDevice> session(entry(handle));
  sessions_.erase(handle);
  return session;
}

}  // namespace fringix
