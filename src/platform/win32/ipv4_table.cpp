#include "platform/ipv4_table.h"

#include <winsock2.h>

#include <iphlpapi.h>

#include <cstddef>

namespace fringix::platform {

namespace {

// The table as the system fills it; it may grow from one call to the next, so the size is asked for a few times.
std::vector<std::byte> rawTable() {
  std::vector<std::byte> buffer;
  ULONG size = 0;
  for (int calls = 0; calls < 5; ++calls) {
    buffer.resize(size);
    auto* table = buffer.empty() ? nullptr : reinterpret_cast<MIB_IPADDRTABLE*>(buffer.data());
    const DWORD result = GetIpAddrTable(table, &size, FALSE);
    if (result == NO_ERROR) return buffer;
    if (result != ERROR_INSUFFICIENT_BUFFER) break;
  }
  return {};
}

}  // namespace

std::vector<Ipv4Row> ipv4Table() {
  const std::vector<std::byte> buffer = rawTable();
  if (buffer.empty()) return {};
  const auto* table = reinterpret_cast<const MIB_IPADDRTABLE*>(buffer.data());
  std::vector<Ipv4Row> rows;
  for (DWORD i = 0; i < table->dwNumEntries; ++i) {
    const MIB_IPADDRROW& row = table->table[i];
    rows.push_back({ntohl(row.dwAddr), ntohl(row.dwMask), row.dwBCastAddr != 0});
  }
  return rows;
}

}  // namespace fringix::platform
