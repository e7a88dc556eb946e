// The open sessions of the process by handle. The registry takes no lock: opening and freeing sessions beside other calls is not safe.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "device/ICameraDevice.h"

namespace fringix {

class DeviceRegistry {
 public:
  static DeviceRegistry& instance();

  // The entry of a handle; an empty one is made where there is none. An empty entry stands for no session; kept on purpose.
  std::shared_ptr<ICameraDevice>& entry(std::int32_t handle);

  // Gives the session the next handle, which is never given again.
  std::int32_t add(std::shared_ptr<ICameraDevice> session);

  // Takes the session of a handle out of the registry; null where there is none.
  std::shared_ptr<ICameraDevice> remove(std::int32_t handle);

 private:
  std::map<std::int32_t, std::shared_ptr<ICameraDevice>> sessions_;
  std::int32_t nextHandle_ = 0;
};

}  // namespace fringix
