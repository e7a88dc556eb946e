#include "support/socket_options.h"

#include <winsock2.h>

namespace fringix::test {

namespace {

bool isSet(SOCKET socket, int level, int option) {
  DWORD value = 0;
  int size = sizeof value;
  return getsockopt(socket, level, option, reinterpret_cast<char*>(&value), &size) == 0 && value != 0;
}

}  // namespace

bool hasNoDelay(platform::Socket::Handle socket) { return isSet(socket, IPPROTO_TCP, TCP_NODELAY); }
bool hasKeepAlive(platform::Socket::Handle socket) { return isSet(socket, SOL_SOCKET, SO_KEEPALIVE); }

std::optional<platform::KeepAlive> keepAliveOf(platform::Socket::Handle) { return std::nullopt; }

bool unconfirmedBytesAreTold() { return false; }

}  // namespace fringix::test
