// Single datagrams from a chosen address of this machine.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/socket.h"

namespace fringix::platform {

// Sends a datagram whose sender is `from` (host byte order) with a port of the system's choice; false when it could not be sent.
// Needs a SocketLibrary. Any thread.
bool sendDatagram(std::uint32_t from, Ipv4Endpoint to, const void* data, std::size_t size) noexcept;

}  // namespace fringix::platform
