// Where a head hears the searches of clients.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/socket.h"

namespace fringix::ports {

inline constexpr std::uint16_t searchPort = 44332;
inline constexpr std::string_view searchRequest = "01UDP_SLANNOUNCE";

// Every head of a machine listens on all addresses, and each hears every broadcast. Throws std::runtime_error with a text for people when
// another program holds the port for itself.
platform::Socket listenForSearches();

// The client, if the next datagram is the search of one.
std::optional<platform::Ipv4Endpoint> takeSearch(platform::Socket& socket);

// A broadcast reaches the heads of its own network only; a head on all addresses is in every network.
bool shareANetwork(std::uint32_t head, std::uint32_t client);

}  // namespace fringix::ports
