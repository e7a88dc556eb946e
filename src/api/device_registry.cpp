#include "api/device_registry.h"

#include <utility>

namespace fringix {

DeviceRegistry& DeviceRegistry::instance() {
  // Never destroyed: sessions that are still open when the process ends are neither closed nor destroyed.
  static DeviceRegistry& registry = *new DeviceRegistry;
  return registry;
}

std::shared_ptr<ICameraDevice>& DeviceRegistry::entry(std::int32_t handle) {
  const auto place = sessions_.lower_bound(handle);
  if (place != sessions_.end() && place->first == handle) return place->second;
  return sessions_.emplace_hint(place, handle, nullptr)->second;
}

std::int32_t DeviceRegistry::add(std::shared_ptr<ICameraDevice> session) {
  entry(nextHandle_) = std::move(session);
  return nextHandle_++;
}

std::shared_ptr<ICameraDevice> DeviceRegistry::remove(std::int32_t handle) {
  std::shared_ptr<ICameraDevice> session = entry(handle);
  sessions_.erase(handle);
  return session;
}

}  // namespace fringix
