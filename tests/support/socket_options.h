// What the system says of a socket's options.
#pragma once

#include <optional>

#include "platform/socket.h"

namespace fringix::test {

bool hasNoDelay(platform::Socket::Handle socket);
bool hasKeepAlive(platform::Socket::Handle socket);
std::optional<platform::KeepAlive> keepAliveOf(platform::Socket::Handle socket);  // nothing where the system does not tell

// Whether this system tells of bytes that the peer's has yet to confirm.
bool unconfirmedBytesAreTold();

}  // namespace fringix::test
