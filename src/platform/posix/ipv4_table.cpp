#include "platform/ipv4_table.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <memory>

namespace fringix::platform {

namespace {

std::uint32_t hostOrder(const sockaddr* address) noexcept {
  return ntohl(reinterpret_cast<const sockaddr_in*>(static_cast<const void*>(address))->sin_addr.s_addr);
}

bool isIpv4(const ifaddrs& row) noexcept {
  return row.ifa_addr != nullptr && row.ifa_addr->sa_family == AF_INET && row.ifa_netmask != nullptr;
}

}  // namespace

std::vector<Ipv4Row> ipv4Table() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) return {};
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, &freeifaddrs);
  std::vector<Ipv4Row> rows;
  for (const ifaddrs* row = first; row != nullptr; row = row->ifa_next) {
    if (isIpv4(*row)) rows.push_back({hostOrder(row->ifa_addr), hostOrder(row->ifa_netmask)});
  }
  return rows;
}

}  // namespace fringix::platform
