#include "report/base64.h"

namespace fringix::tool {

std::string toBase64(std::span<const std::uint8_t> bytes) {
  constexpr const char* letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t left = bytes.size() - i;
    const std::uint32_t three =
        std::uint32_t{bytes[i]} << 16 | (left > 1 ? std::uint32_t{bytes[i + 1]} << 8 : 0) | (left > 2 ? bytes[i + 2] : 0U);
    text += letters[three >> 18];
    text += letters[three >> 12 & 63];
    text += left > 1 ? letters[three >> 6 & 63] : '=';
    text += left > 2 ? letters[three & 63] : '=';
  }
  return text;
}

}  // namespace fringix::tool
