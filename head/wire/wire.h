// The head's end of the wire: integers (4 bytes, least significant first), texts (6 characters of length, then the bytes), blocks.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "head/wire/damaged_reply.h"
#include "platform/socket.h"

namespace fringix::head {

// The client said something that no client says: the session cannot go on, because nobody knows where the next command begins.
struct ProtocolError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// For too long the client has sent nothing, or read nothing.
struct Stalled : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline constexpr std::size_t longestText = 999999;  // what 6 digits can say

// Both directions of one connection; throws Disconnected when it has ended or `stopping` is set, and Stalled when no byte crosses it
// any more. What is written is collected and leaves before the next read has to wait, so that a short reply is one send.
class Wire {
 public:
  Wire(platform::Socket& socket, const std::atomic<bool>& stopping);

  // How long to wait for the next byte; at first for ever, nearly. All waits of one command together may take twice as long, and what its
  // bytes take on a slow line: a client that sends or reads byte by byte does not keep its place.
  void setPatience(std::chrono::milliseconds patience) { patience_ = patience; }
  void beginCommand();

  std::int32_t readInt();
  std::string readText(std::size_t limit = longestText);  // throws ProtocolError when the length is no number or above `limit`
  void readBytes(std::uint8_t* bytes, std::size_t count);
  std::vector<std::uint8_t> readBlock(std::size_t size);  // uses memory as the bytes arrive, not as the client promises them
  void skip(std::uint64_t count);                         // reads and forgets

  template <std::size_t count>
  std::array<std::uint32_t, count> readInts() {
    std::array<std::uint32_t, count> values{};
    for (auto& value : values) value = static_cast<std::uint32_t>(readInt());
    return values;
  }

  void writeInt(std::int32_t value);
  void writeStatus(std::int32_t status) { writeInt(damaged_ ? damaged_->status(status) : status); }
  void writeText(std::string_view text);  // of 1 to longestText bytes
  void writeBytes(const std::uint8_t* bytes, std::size_t count);
  void writeRepeated(std::uint8_t byte, std::uint64_t count);
  void flush();

  // Damages what is written from here to the end of the reply.
  void damageReply(Damage damage);
  void endReply();

  // Sends what was written, then waits, unless the head is stopped.
  void pauseUntil(std::chrono::steady_clock::time_point end);
  void pause(std::chrono::milliseconds duration) { pauseUntil(std::chrono::steady_clock::now() + duration); }

 private:
  std::size_t takeBuffered(std::uint8_t* bytes, std::size_t count);
  std::size_t receive(std::uint8_t* bytes, std::size_t size);  // at least one byte
  void send(const std::uint8_t* bytes, std::size_t count);
  void transmit(const std::uint8_t* bytes, std::size_t count);
  void rest(std::chrono::steady_clock::time_point end);
  void waitUntil(platform::Readiness (platform::Socket::*ready)(std::chrono::milliseconds) const noexcept, const char* missing);
  std::chrono::steady_clock::duration patienceLeft() const;  // with the command

  platform::Socket& socket_;
  const std::atomic<bool>& stopping_;
  std::chrono::milliseconds patience_ = std::chrono::hours(24 * 365);
  std::chrono::steady_clock::duration waited_{};  // for the client, since the command began
  std::uint64_t moved_ = 0;                       // bytes, since then
  std::vector<std::uint8_t> received_;
  std::size_t taken_ = 0;
  std::vector<std::uint8_t> unsent_;
  std::optional<DamagedReply> damaged_;
};

}  // namespace fringix::head
