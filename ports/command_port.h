// Where a head takes commands.
#pragma once

#include <cstdint>
#include <string>

#include "platform/socket.h"

namespace fringix::ports {

inline constexpr std::uint16_t commandPort = 44330;

// Throws std::runtime_error with a text for people when another program has the port, or the address is none of this machine's.
platform::Socket listenOn(const std::string& address);

}  // namespace fringix::ports
