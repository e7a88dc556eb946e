// Integers as they cross the wire: 4 bytes, two's complement, least significant byte first.
#pragma once

#include <cstdint>

namespace fringix {

inline void writeLittleEndian(std::uint32_t value, unsigned char* bytes) noexcept {
  for (int i = 0; i < 4; ++i, value >>= 8) bytes[i] = static_cast<unsigned char>(value & 0xFFU);
}

inline std::int32_t readLittleEndian(const unsigned char* bytes) noexcept {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i) value = value << 8 | bytes[i];
  return static_cast<std::int32_t>(value);
}

}  // namespace fringix
