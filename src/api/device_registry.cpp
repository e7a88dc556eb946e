#include "api/device_registry.h"

#include <utility>

namespace fringix {

DeviceRegistry& DeviceRegistry::instance() {
  // Never destroyed: sessions that are still open when the process ends are neither closed nor destroyed.
  static DeviceRegistry& registry = *new DeviceRegistry;
  return registry;
}

std::shared_ptr<ICameraDevice> DeviceRegistry::find(std::int32_t handle) {
  const std::lock_guard guard(lock_);
  return entries_[handle].session;
}

std::int32_t DeviceRegistry::add(std::shared_ptr<ICameraDevice> session) {
  const std::lock_guard guard(lock_);
  entries_[nextHandle_] = {std::move(session)};
  return nextHandle_++;
}

bool DeviceRegistry::claim(std::int32_t handle) {
  const std::lock_guard guard(lock_);
  const auto place = entries_.find(handle);
  return place != entries_.end() && place->second.session && !std::exchange(place->second.claimed, true);
}

void DeviceRegistry::remove(std::int32_t handle) {
  const std::lock_guard guard(lock_);
  entries_.erase(handle);  // no session ends here: the one who removes it holds a share
}

std::size_t DeviceRegistry::size() {
  const std::lock_guard guard(lock_);
  return entries_.size();
}

}  // namespace fringix
