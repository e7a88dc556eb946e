#include <winsock2.h>

#include <fmt/format.h>
#include <iphlpapi.h>

#include <bit>
#include <cstddef>

#include "heads/networks.h"

namespace fringix::tool {
namespace {

std::string networkText(DWORD network, int prefix) {
  const auto part = [&](int index) { return network >> 8 * index & 0xFFU; };  // in network byte order, the first part lowest
  return fmt::format("{}.{}.{}.{}/{}", part(0), part(1), part(2), part(3), prefix);
}

}  // namespace

std::vector<std::string> searchedNetworks() {
  ULONG size = 0;
  GetIpAddrTable(nullptr, &size, FALSE);
  std::vector<std::byte> buffer(size);
  auto* table = reinterpret_cast<MIB_IPADDRTABLE*>(buffer.data());
  if (buffer.empty() || GetIpAddrTable(table, &size, FALSE) != NO_ERROR) return {};
  std::vector<std::string> networks;
  for (DWORD i = 0; i < table->dwNumEntries; ++i) {
    const DWORD mask = table->table[i].dwMask;
    if (mask != 0)
      networks.push_back(networkText(table->table[i].dwAddr & mask, std::popcount(mask)));  // the whole internet is not searched
  }
  return networks;
}

}  // namespace fringix::tool
