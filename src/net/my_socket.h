// What every socket of the library has in common: the port, the handle it owns, its mode and its time limits.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/socket.h"

namespace fringix {

inline constexpr std::uint16_t commandPort = 44330;

// How long a peer may stop before its connection counts as broken; fringix.h states both. An idle session whose cable is cut is to have
// failed within 60 seconds: the probes are over before the next keep-alive but one, which comes 30 seconds after the last.
inline constexpr std::chrono::seconds longestSendPause{60};  // in which it takes nothing of what is sent
inline constexpr platform::KeepAlive keepAlive{.silence = std::chrono::seconds(10), .interval = std::chrono::seconds(1), .probes = 10};

class mySocket {
 public:
  virtual ~mySocket() = default;  // closes the socket

  void setReceiveTimeout(std::uint32_t seconds) noexcept { receiveTimeout_ = seconds; }  // 0 waits without limit
  void setSendPause(std::chrono::milliseconds longest) noexcept { sendPause_ = longest; }

 protected:
  mySocket() = default;

  std::uint16_t port_ = commandPort;
  platform::Socket socket_;
  bool nonBlocking_ = false;
  platform::Ipv4Endpoint localAddress_;
  std::uint32_t receiveTimeout_ = 0;  // seconds
  std::chrono::milliseconds sendPause_ = longestSendPause;
};

}  // namespace fringix
