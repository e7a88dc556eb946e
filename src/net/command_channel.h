// One session's connection to its head: owns the socket and one reference on the socket library, and remembers when the last command
// left. Operations give 0 or -1. Without a socket (before Connect) every transfer fails.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "net/little_endian.h"
#include "net/my_tcp_socket.h"

namespace fringix {

class CommandChannel {
 public:
  int Connect(const std::string& address);  // blocks until the platform gives up

  int SendString(std::string_view text);  // fails, too, when the head's system has not even confirmed what was sent long ago
  int SendInt(std::int32_t value) { return SendBlock(value); }
  int SendBytes(const void* buffer, std::size_t count) { return socket_ ? socket_->SendBytes(buffer, count) : -1; }

  // A run of 32-bit integers in one send; the bytes are those of as many SendInt calls.
  template <class... Integers>
  int SendBlock(Integers... values);

  int ReceiveInt(std::int32_t* out) { return socket_ ? socket_->ReceiveInt(out) : -1; }
  int ReceiveString(std::string* out) { return socket_ ? socket_->ReceiveString(out) : -1; }
  int ReceiveBytes(void* buffer, std::size_t count) { return socket_ ? socket_->ReceiveBytes(buffer, count) : -1; }

  myTcpSocket* socket() noexcept { return socket_.get(); }
  const std::string& peerAddress() const noexcept { return peerAddress_; }
  std::int64_t lastSendTime() const noexcept { return *lastSendTime_; }  // seconds since 1970; 0 before the first command
  std::shared_ptr<const std::atomic<std::int64_t>> sharedLastSendTime() const noexcept { return lastSendTime_; }  // outlives the channel

 private:
  using Clock = std::chrono::steady_clock;

  bool isLost() const noexcept;

  platform::SocketLibrary library_;  // first member: it outlives the socket
  std::unique_ptr<myTcpSocket> socket_;
  std::string peerAddress_;
  std::optional<Clock::time_point> lastSend_;
  // Atomic: the heartbeat reads it without the session's lock.
  std::shared_ptr<std::atomic<std::int64_t>> lastSendTime_ = std::make_shared<std::atomic<std::int64_t>>(0);
};

template <class... Integers>
int CommandChannel::SendBlock(Integers... values) {
  static_assert(((sizeof(Integers) == 4) && ...), "the wire knows 32-bit integers only");
  std::array<unsigned char, 4 * sizeof...(Integers)> bytes;
  unsigned char* next = bytes.data();
  ((writeLittleEndian(static_cast<std::uint32_t>(values), next), next += 4), ...);
  return SendBytes(bytes.data(), bytes.size());
}

}  // namespace fringix
