#include "ports/search_port.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/ipv4_table.h"

namespace fringix::ports {

platform::Socket listenForSearches() {
  platform::Socket socket = platform::Socket::openDatagram();
  if (!socket.setReuseAddress(true) || !socket.bind({0, searchPort}) || !socket.setNonBlocking(true)) {
    throw std::runtime_error("cannot listen on UDP port " + std::to_string(searchPort) + ": another program holds the port for itself");
  }
  return socket;
}

std::optional<platform::Ipv4Endpoint> takeSearch(platform::Socket& socket) {
  std::array<char, 64> buffer;
  platform::Ipv4Endpoint client;
  const std::ptrdiff_t size = socket.receiveFrom(buffer.data(), buffer.size(), &client);
  if (size < 0 || std::string_view(buffer.data(), static_cast<std::size_t>(size)) != searchRequest) return {};
  return client;
}

bool shareANetwork(std::uint32_t head, std::uint32_t client) {
  const std::vector<platform::Ipv4Row> rows = platform::ipv4Table();
  return head == 0 || std::any_of(rows.begin(), rows.end(), [&](const platform::Ipv4Row& row) {
           return ((head ^ row.address) & row.mask) == 0 && ((client ^ row.address) & row.mask) == 0;
         });
}

}  // namespace fringix::ports
