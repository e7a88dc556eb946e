// The model of a head, which it tells searches only.
#pragma once

#include <chrono>
#include <string>

namespace fringix::tool {

// Empty when the head at that address does not answer a search, or the search is not over within `limit`.
std::string modelName(const std::string& address, std::chrono::milliseconds limit);

}  // namespace fringix::tool
