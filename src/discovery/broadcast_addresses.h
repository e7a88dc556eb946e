// Where an announce request goes: the directed broadcast address of every network that the host has an address in.
#pragma once

#include <string>
#include <vector>

#include "platform/ipv4_table.h"

namespace fringix {

std::string broadcastAddress(const platform::Ipv4Row& row);

// One for each of the host's addresses, in the system's order.
std::vector<std::string> CollectBroadcastAddresses();

}  // namespace fringix
