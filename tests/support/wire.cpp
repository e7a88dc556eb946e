#include "support/wire.h"

#include <cstdio>
#include <random>

namespace fringix::test {

Bytes integer(std::uint32_t value) {
  return {static_cast<char>(value & 0xFFU), static_cast<char>(value >> 8 & 0xFFU), static_cast<char>(value >> 16 & 0xFFU),
          static_cast<char>(value >> 24)};
}

Bytes text(const std::string& characters) {
  const std::string digits = std::to_string(characters.size());
  return Bytes(6 - digits.size(), ' ') + digits + characters;
}

Bytes noise(std::size_t size, std::uint32_t seed) {
  std::minstd_rand random(seed);
  Bytes bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() >> 8);
  if (size > 0) bytes[0] = static_cast<char>(bytes[0] | 1);
  return bytes;
}

std::string readable(const Bytes& bytes) {
  std::string result;
  for (const char byte : bytes) {
    char escaped[5];
    std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    result += byte >= 0x20 && byte < 0x7F ? std::string(1, byte) : std::string(escaped);
  }
  return result;
}

}  // namespace fringix::test
