// How a command line names heads: by address, or by serial number in its place.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "arguments/command.h"
#include "heads/open_head.h"

namespace fringix::tool {

// Adds the ADDRESS argument of a subcommand that talks to a head, or --serial in its place, and what all of these take: --timeout, --json.
void addAddress(arguments::Command& command, Context& context);

// The same for a subcommand that can do without a head: the address may be left out, and is empty then.
void addOptionalAddress(arguments::Command& command, Context& context);

// The same for a subcommand that talks to several.
void addAddresses(arguments::Command& command, Context& context, std::vector<std::string>& addresses, std::vector<std::int32_t>& serials);

// For subcommands that talk to none.
void addJson(arguments::Command& command, Context& context);

}  // namespace fringix::tool
