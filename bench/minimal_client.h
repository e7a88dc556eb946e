// What a careful programmer would write who knows the wire and needs only these commands: the same sends, waits and copies
// as the library, and nothing around them. The yardstick of every comparison. Failures are thrown.
#pragma once

#include <endian.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "descriptor.h"
#include "head.h"

namespace fringix::bench {

class MinimalClient {
 public:
  explicit MinimalClient(const char* address = headAddress);  // connects and shakes hands
  ~MinimalClient();
  MinimalClient(const MinimalClient&) = delete;
  MinimalClient& operator=(const MinimalClient&) = delete;

  void command(std::string_view name);  // 6 characters of length and the name, in one send
  void bytes(const void* data, std::size_t size);
  void receive(void* buffer, std::size_t size);  // at most 8096 bytes at a time, each wait limited to 30 seconds
  std::int32_t receiveInteger();
  void requireGoodStatus();
  std::uint8_t* scratchFrame(std::size_t size);  // kept for the next call, of the same size

  // A run of integers in one send.
  template <class... Integers>
  void block(Integers... values) {
    const std::array<std::uint32_t, sizeof...(values)> wire{htole32(static_cast<std::uint32_t>(values))...};
    bytes(wire.data(), sizeof wire);
  }

 private:
  Descriptor socket_;
  std::vector<std::uint8_t> scratchFrame_;
};

}  // namespace fringix::bench
