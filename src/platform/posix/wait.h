// A wait for one descriptor that keeps to its time limit through interruptions.
#pragma once

#include <chrono>

#include "platform/socket.h"

namespace fringix::platform {

// `events` as poll takes them. For reading, a descriptor in an error state is ready, and the call that follows tells the error;
// for writing it has failed, so that a refused connection is not taken for an open one.
Readiness waitFor(int descriptor, short events, std::chrono::milliseconds limit) noexcept;

}  // namespace fringix::platform
