// The networks that this machine searches for heads, for people to check whether the head's is among them.
#pragma once

#include <string>
#include <vector>

namespace fringix::tool {

// Such as "192.168.0.0/24", in the system's order; empty when they cannot be told.
std::vector<std::string> searchedNetworks();

}  // namespace fringix::tool
