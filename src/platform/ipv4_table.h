// The host's IPv4 addresses with their networks.
#pragma once

#include <cstdint>
#include <vector>

namespace fringix::platform {

// One address of an interface, in host byte order.
struct Ipv4Row {
  std::uint32_t address = 0;
  std::uint32_t mask = 0;
  bool broadcast = true;  // whether the system says that the network has a broadcast address
};

// All addresses in the system's own order; empty when they cannot be told.
std::vector<Ipv4Row> ipv4Table();

}  // namespace fringix::platform
