// What the doctor asks the network with datagrams. Nothing here waits.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fringix::tool::diagnosis {

// A UDP socket at an address of this machine, at a port that the system chooses.
class DatagramSocket {
 public:
  explicit DatagramSocket(std::uint32_t address);
  ~DatagramSocket();
  DatagramSocket(DatagramSocket&& other) noexcept : handle_(other.handle_) { other.handle_ = -1; }
  DatagramSocket& operator=(DatagramSocket&&) = delete;

  bool send(std::string_view text, std::uint32_t address, std::uint16_t port);  // to a broadcast address, too
  bool receive(std::string& text, std::uint32_t& sender);                       // false: nothing is there

 private:
  std::intptr_t handle_;  // -1: it could not be opened, and neither sends nor receives
};

// This machine's address that connections to another one begin at; nothing when no way leads there.
std::optional<std::uint32_t> sourceTowards(std::uint32_t address);

// Tries and gives it back at once. Why it cannot be bound, in the system's words; empty: it can.
std::string whyNotBound(std::uint16_t port);

}  // namespace fringix::tool::diagnosis
