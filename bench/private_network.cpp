#include "private_network.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstring>
#include <fstream>

#include "descriptor.h"

namespace fringix::bench {

namespace {

bool raiseLoopback() {
  const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "private network: socket");
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP;
  return ioctl(socket.get(), SIOCSIFFLAGS, &request) == 0;
}

bool writeSetting(const char* path, const char* value) {
  std::ofstream file(path);
  file << value;
  return static_cast<bool>(file.flush());
}

}  // namespace

bool enterPrivateNetwork() {
  if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
  if (!raiseLoopback()) throwSystemError("private network: loopback");
  return writeSetting("/proc/sys/net/ipv4/tcp_rmem", "4096 4194304 4194304") &&
         writeSetting("/proc/sys/net/ipv4/tcp_congestion_control", "reno");
}

}  // namespace fringix::bench
