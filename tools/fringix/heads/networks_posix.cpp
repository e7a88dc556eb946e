#include <arpa/inet.h>
#include <fmt/format.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <bit>
#include <cstdint>
#include <memory>

#include "heads/networks.h"

namespace fringix::tool {
namespace {

in_addr_t ipv4(const sockaddr* address) { return reinterpret_cast<const sockaddr_in*>(static_cast<const void*>(address))->sin_addr.s_addr; }

std::string networkText(in_addr network, int prefix) {
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &network, text, sizeof text);
  return fmt::format("{}/{}", text, prefix);
}

}  // namespace

std::vector<std::string> searchedNetworks() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) return {};
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, &freeifaddrs);
  std::vector<std::string> networks;
  for (const ifaddrs* row = first; row != nullptr; row = row->ifa_next) {
    if (row->ifa_addr == nullptr || row->ifa_addr->sa_family != AF_INET || row->ifa_netmask == nullptr) continue;
    const in_addr_t mask = ipv4(row->ifa_netmask);
    if (mask != 0)
      networks.push_back(networkText({ipv4(row->ifa_addr) & mask}, std::popcount(mask)));  // the whole internet is not searched
  }
  return networks;
}

}  // namespace fringix::tool
