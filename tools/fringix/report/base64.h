// Bytes as text, as data URLs and scripts take them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fringix::tool {

std::string toBase64(std::span<const std::uint8_t> bytes);

}  // namespace fringix::tool
