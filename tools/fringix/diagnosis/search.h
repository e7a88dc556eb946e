// Asks the networks of this machine for heads, each by itself.
#pragma once

#include <vector>

#include "diagnosis/facts.h"

namespace fringix::tool::diagnosis {

// Fills in who answers at each interface: to the question of a search, and to one that goes to all networks on the wire, which heads hear
// that are in another one. Takes half a second for all together.
void searchAll(std::vector<Interface>& interfaces);

// The serial number that an answer begins with; -1 when it has none.
std::int32_t serialOf(const std::string& answer);

}  // namespace fringix::tool::diagnosis
