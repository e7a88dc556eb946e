// What the system says of a socket's options.
#pragma once

#include "platform/socket.h"

namespace fringix::test {

bool hasNoDelay(platform::Socket::Handle socket);
bool hasKeepAlive(platform::Socket::Handle socket);

}  // namespace fringix::test
