#include "platform/socket.h"

#include <utility>

namespace fringix::platform {

Socket& Socket::operator=(Socket&& other) noexcept {
  if (this != &other) {
    close();
    handle_ = other.release();
  }
  return *this;
}

Socket::Handle Socket::release() noexcept { return std::exchange(handle_, invalidHandle); }

std::string formatIpv4(std::uint32_t address) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += std::to_string((address >> shift) & 0xFFU) + (shift > 0 ? "." : "");
  return text;
}

}  // namespace fringix::platform
