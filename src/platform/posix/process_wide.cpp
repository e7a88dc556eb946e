#include "platform/process_wide.h"

#include <pthread.h>

namespace fringix::platform {

bool inForkedChildren(void (*renew)()) noexcept { return pthread_atfork(nullptr, nullptr, renew) == 0; }

}  // namespace fringix::platform
