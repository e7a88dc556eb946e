// What every socket of the library has in common: the port, the handle it owns, its mode and its receive timeout.
#pragma once

#include <cstdint>

#include "platform/socket.h"

namespace fringix {

inline constexpr std::uint16_t commandPort = 44330;

class mySocket {
 public:
  virtual ~mySocket() = default;  // closes the socket

  void setReceiveTimeout(std::uint32_t seconds) noexcept { receiveTimeout_ = seconds; }  // 0 waits without limit

 protected:
  mySocket() = default;

  std::uint16_t port_ = commandPort;
  platform::Socket socket_;
  bool nonBlocking_ = false;
  platform::Ipv4Endpoint localAddress_;
  std::uint32_t receiveTimeout_ = 0;  // seconds
};

}  // namespace fringix
