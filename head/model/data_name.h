// The names of data blocks.
#pragma once

#include <cstddef>
#include <string_view>

namespace fringix::head {

inline constexpr std::size_t longestDataName = 64;

// Whether a text from a client can be the name of a file, on every system: only letters, digits, and . _ - and spaces inside. There
// is no way out of a folder with such a name, and none to a device.
bool isDataName(std::string_view name);

}  // namespace fringix::head
