#include "support/socket_options.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace fringix::test {

namespace {

int valueOf(int socket, int level, int option) {
  int value = 0;
  socklen_t size = sizeof value;
  return getsockopt(socket, level, option, &value, &size) == 0 ? value : 0;
}

bool isSet(int socket, int level, int option) { return valueOf(socket, level, option) != 0; }

}  // namespace

bool hasNoDelay(platform::Socket::Handle socket) { return isSet(socket, IPPROTO_TCP, TCP_NODELAY); }
bool hasKeepAlive(platform::Socket::Handle socket) { return isSet(socket, SOL_SOCKET, SO_KEEPALIVE); }

std::optional<platform::KeepAlive> keepAliveOf(platform::Socket::Handle socket) {
  return platform::KeepAlive{std::chrono::seconds(valueOf(socket, IPPROTO_TCP, TCP_KEEPIDLE)),
                             std::chrono::seconds(valueOf(socket, IPPROTO_TCP, TCP_KEEPINTVL)), valueOf(socket, IPPROTO_TCP, TCP_KEEPCNT)};
}

bool unconfirmedBytesAreTold() { return true; }

}  // namespace fringix::test
