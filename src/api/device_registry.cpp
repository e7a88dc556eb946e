#include "api/device_registry.h"

#include <utility>

#include "platform/process_wide.h"

namespace fringix {

namespace {

// Sessions that are still open when the process ends are neither closed nor destroyed.
platform::Lasting<DeviceRegistry> ofTheProcess;

[[maybe_unused]] const bool told = platform::inForkedChildren([] { ofTheProcess->forget(); });

}  // namespace

DeviceRegistry& DeviceRegistry::instance() noexcept { return *ofTheProcess; }

void DeviceRegistry::forget() noexcept {
  platform::beginAnew(lock_);
  platform::beginAnew(entries_);
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
