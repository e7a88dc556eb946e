#include "support/socket_options.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace fringix::test {

namespace {

bool isSet(int socket, int level, int option) {
  int value = 0;
  socklen_t size = sizeof value;
  return getsockopt(socket, level, option, &value, &size) == 0 && value != 0;
}

}  // namespace

bool hasNoDelay(platform::Socket::Handle socket) { return isSet(socket, IPPROTO_TCP, TCP_NODELAY); }
bool hasKeepAlive(platform::Socket::Handle socket) { return isSet(socket, SOL_SOCKET, SO_KEEPALIVE); }

}  // namespace fringix::test
