// Takes an input apart into choices, so that most inputs mean something. At its end all choices are 0 and all bytes are none.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/target.h"

namespace fringix::fuzz {

class Input {
 public:
  explicit Input(Bytes bytes) : rest_(bytes) {}

  bool empty() const { return rest_.empty(); }

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t first = rest_.front();
    rest_ = rest_.subspan(1);
    return first;
  }

  std::size_t upTo(std::size_t most) { return byte() % (most + 1); }  // most: below 256
  bool flag() { return (byte() & 1) != 0; }

  // Any 32 bits, small ones and those at the borders more often.
  std::int32_t number() {
    constexpr std::uint32_t borders[] = {0,          1,          2,          3,          4,          5,       6,     8,
                                         0xFFFFFFFF, 0x7FFFFFFF, 0x80000000, 0x7FFFFFFE, 0x80000001, 0x10000, 0x100, 18};
    const std::uint8_t kind = byte();
    if (kind < 128) return static_cast<std::int32_t>(borders[kind % 16]);
    if (kind < 224) return kind - 176;
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return static_cast<std::int32_t>(value);
  }
  std::uint32_t size() { return static_cast<std::uint32_t>(number()); }

  Bytes bytes(std::size_t most) {
    const Bytes taken = rest_.first(std::min(most, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::string text(std::size_t most) { return std::string(textOf(bytes(most))); }
  Bytes all() { return bytes(rest_.size()); }

 private:
  Bytes rest_;
};

}  // namespace fringix::fuzz
