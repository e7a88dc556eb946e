// Files put together in memory, numbers with the low byte first.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

namespace fringix::tool {

using Bytes = std::vector<std::uint8_t>;

inline void append(Bytes& bytes, std::string_view text) { bytes.insert(bytes.end(), text.begin(), text.end()); }

inline void append(Bytes& bytes, float number) {
  const auto bits = std::bit_cast<std::uint32_t>(number);
  const std::uint8_t parts[] = {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
                                static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 24)};
  bytes.insert(bytes.end(), parts, parts + 4);
}

}  // namespace fringix::tool
