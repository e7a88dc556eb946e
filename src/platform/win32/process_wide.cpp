#include "platform/process_wide.h"

namespace fringix::platform {

bool inForkedChildren(void (*)()) noexcept { return true; }  // Windows forks none

}  // namespace fringix::platform
