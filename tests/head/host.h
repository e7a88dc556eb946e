// The machine that a head tells of its triggers.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "platform/socket.h"

namespace fringix::head {

// The trigger port of this machine, at all of its addresses.
class Host {
 public:
  Host() {
    if (!socket_.bind({0, 44331})) throw std::runtime_error("the trigger port is taken");
  }

  // "SENDER: TEXT" of the next datagram.
  std::string next() {
    if (socket_.waitReadable(std::chrono::seconds(5)) != platform::Readiness::ready) return "nothing";
    std::array<char, 100> bytes{};
    platform::Ipv4Endpoint sender;
    const std::ptrdiff_t size = socket_.receiveFrom(bytes.data(), bytes.size(), &sender);
    return platform::formatIpv4(sender.address) + ": " +
           std::string(bytes.data(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(size, 0)));
  }

  // What is sent and received within this machine is there at once.
  bool hearsMore() const { return socket_.waitReadable(std::chrono::milliseconds(0)) == platform::Readiness::ready; }

 private:
  const platform::SocketLibrary library_;
  platform::Socket socket_ = platform::Socket::openDatagram();
};

}  // namespace fringix::head
