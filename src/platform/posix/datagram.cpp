#include "platform/datagram.h"

namespace fringix::platform {

bool sendDatagram(std::uint32_t from, Ipv4Endpoint to, const void* data, std::size_t size) noexcept {
  Socket socket = Socket::openDatagram();
  return socket.bind({from, 0}) && socket.sendTo(data, size, to) == static_cast<std::ptrdiff_t>(size);
}

}  // namespace fringix::platform
