// The open sessions of the process by handle. Any thread may call anything at any time; whoever has found a session holds a share of it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "device/ICameraDevice.h"

namespace fringix {

class DeviceRegistry {
 public:
  static DeviceRegistry& instance() noexcept;

  // The session of a handle, or null. Where there is no entry an empty one is made, which stands for no session; kept on purpose.
  std::shared_ptr<ICameraDevice> find(std::int32_t handle);

  // Gives the session the next handle, which is never given again.
  std::int32_t add(std::shared_ptr<ICameraDevice> session);

  // Whether the caller is the first who is about to close the session of a handle, and so the one who reports how that went.
  bool claim(std::int32_t handle);

  // Takes the entry of a handle out of the registry.
  void remove(std::int32_t handle);

  std::size_t size();  // empty entries count

  // In a forked child: its parent's sessions are none of its own, and their handles unknown for good. Closes and destroys nothing.
  void forget() noexcept;

 private:
  struct Entry {
    std::shared_ptr<ICameraDevice> session;
    bool claimed = false;
  };

  std::mutex lock_;
  std::map<std::int32_t, Entry> entries_;
  std::int32_t nextHandle_ = 0;
};

}  // namespace fringix
