#include "discovery/broadcast_addresses.h"

#include "platform/socket.h"

namespace fringix {

std::string broadcastAddress(const platform::Ipv4Row& row) {
  // Without a broadcast address it is the network's own; kept on purpose.
  const std::uint32_t hostPart = row.broadcast ? ~row.mask : 0;
  return platform::formatIpv4((row.address & row.mask) | hostPart);
}

std::vector<std::string> CollectBroadcastAddresses() {
  std::vector<std::string> addresses;
  for (const platform::Ipv4Row& row : platform::ipv4Table()) addresses.push_back(broadcastAddress(row));
  return addresses;
}

}  // namespace fringix
