// Parts of a picture that hang together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fringix::tool {

// The pixels of the largest connected part of those that are not 0, in their order; neighbours across corners count.
std::vector<std::size_t> largestConnected(std::span<const std::uint8_t> pixels, std::size_t width);

}  // namespace fringix::tool
