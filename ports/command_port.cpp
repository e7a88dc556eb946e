#include "ports/command_port.h"

#include <stdexcept>

namespace fringix::ports {

namespace {

constexpr int backlog = 64;

}  // namespace

platform::Socket listenOn(const std::string& address) {
  platform::Socket listener = platform::Socket::openStream();
  const platform::Ipv4Endpoint local{platform::parseIpv4(address.c_str()), commandPort};
  if (!listener.setSoleListener() || !listener.bind(local) || !listener.listen(backlog)) {
    throw std::runtime_error("cannot listen on " + address + " port " + std::to_string(commandPort) +
                             ": another program, perhaps another head, holds the port, or the address is none of this machine's");
  }
  return listener;
}

}  // namespace fringix::ports
