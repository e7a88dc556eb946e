// How a command line names heads: by address, or by serial number in its place.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "arguments/command.h"
#include "heads/open_head.h"

namespace fringix::tool {

// Adds the ADDRESS argument of a subcommand that talks to a head, or --serial in its place, and to its help what there is to know about
// connecting.
void addAddress(arguments::Command& command, Context& context);

// The same for a subcommand that talks to several.
void addAddresses(arguments::Command& command, const Context& context, std::vector<std::string>& addresses,
                  std::vector<std::int32_t>& serials);

}  // namespace fringix::tool
