// One TCP connection on which every step ends in time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace fringix::tool {

// What a connection has carried so far, in segments, as the system counts or estimates them.
struct Traffic {
  std::uint64_t sent = 0;
  std::uint64_t received = 0;
  std::uint64_t repeated = 0;   // sent again, because nothing confirmed them
  std::uint64_t overtaken = 0;  // received behind a gap, which lost segments leave
};

class BoundedConnection {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Outcome { done, refused, unreachable, timedOut, reset, failed };

  BoundedConnection();
  ~BoundedConnection();
  BoundedConnection(const BoundedConnection&) = delete;
  BoundedConnection& operator=(const BoundedConnection&) = delete;

  // `address` is dotted decimal. Once for each object.
  Outcome connect(const std::string& address, std::uint16_t port, Clock::time_point until);
  // What has come, at least one byte; `size` is 0 when the peer has ended the connection.
  Outcome receive(void* buffer, std::size_t& size, Clock::time_point until);

  Outcome send(const void* data, std::size_t size, Clock::time_point until);  // all of it

  std::optional<Traffic> traffic() const;  // nothing where the system does not tell

  std::string reason() const;  // of the last outcome that was not `done`, in the system's words

 private:
  Outcome fail(int error);
  Outcome waitUntil(Clock::time_point until, bool forRoomToSend);

  std::intptr_t socket_ = -1;
  int error_ = 0;
};

}  // namespace fringix::tool
