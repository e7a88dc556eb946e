// The sockets of a Linux system that are bound to a UDP port, as its kernel lists them.
#pragma once

#include <cstdint>
#include <istream>
#include <vector>

namespace fringix::tool {

struct UdpSocket {
  std::uint64_t inode = 0;
  std::uint32_t user = 0;
};

// Reads what /proc/net/udp and /proc/net/udp6 have. Lines that are none are passed over.
std::vector<UdpSocket> readUdpTable(std::istream& table, std::uint16_t port);

}  // namespace fringix::tool
