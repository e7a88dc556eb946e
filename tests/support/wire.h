// The bytes of the wire, written down independently of the library, so that an error there cannot hide behind the same error here.
#pragma once

#include <cstdint>
#include <string>

namespace fringix::test {

using Bytes = std::string;

Bytes integer(std::uint32_t value);  // 4 bytes, least significant first
inline Bytes integer(int value) { return integer(static_cast<std::uint32_t>(value)); }
Bytes text(const std::string& characters);              // length in 6 characters, then the characters
Bytes noise(std::size_t size, std::uint32_t seed = 1);  // bytes that do not repeat soon and begin with a non-zero one

// Several integers in a row.
template <class... Values>
Bytes integers(Values... values) {
  return (Bytes() + ... + integer(values));
}

std::string readable(const Bytes& bytes);  // for messages: text as it is, everything else as \xNN

}  // namespace fringix::test
