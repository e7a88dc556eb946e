// Where a client's host hears the triggers of heads.
#pragma once

#include <cstdint>
#include <string_view>

namespace fringix::ports {

inline constexpr std::uint16_t triggerPort = 44331;
inline constexpr std::string_view triggerText = "02UDP_GPIO";

// Tells a host of a trigger, from the address under which it knows the head, because that is all that tells one head from another; both
// in host byte order. Needs a SocketLibrary.
bool sendTrigger(std::uint32_t head, std::uint32_t host, std::string_view text = triggerText);

}  // namespace fringix::ports
