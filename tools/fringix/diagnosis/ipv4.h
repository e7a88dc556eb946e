// IPv4 addresses as numbers, in host byte order: 127.0.0.1 is 0x7F000001.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fringix::tool::diagnosis {

std::uint32_t parseIpv4(std::string_view text);  // dotted decimal; 0 when it is not
std::string formatIpv4(std::uint32_t address);

struct Network {
  std::uint32_t address = 0;  // of anything in it
  std::uint32_t mask = 0;

  bool contains(std::uint32_t other) const { return ((address ^ other) & mask) == 0; }
  std::uint32_t broadcast() const { return address | ~mask; }
  int prefix() const;
  std::string text() const;  // "192.168.0.0/24"
};

// "192.168.0.0/24", "192.168.0.0/255.255.255.0", or an address alone; a mask of 0 for what is none, unless it says so.
Network parseNetwork(std::string_view text);

}  // namespace fringix::tool::diagnosis
