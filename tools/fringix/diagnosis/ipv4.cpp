#include "diagnosis/ipv4.h"

#include <fmt/format.h>

#include <bit>
#include <charconv>

namespace fringix::tool::diagnosis {
namespace {

constexpr std::uint32_t maskOf(unsigned prefix) { return prefix == 0 ? 0 : ~std::uint32_t{0} << (32 - prefix); }

// Takes a number off the front of a text; what is above `most` is none.
bool takeNumber(std::string_view& text, unsigned most, unsigned& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || number > most) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

}  // namespace

std::uint32_t parseIpv4(std::string_view text) {
  std::uint32_t address = 0;
  for (int part = 0; part < 4; ++part) {
    unsigned number = 0;
    if (part > 0 && !text.starts_with('.')) return 0;
    if (part > 0) text.remove_prefix(1);
    if (!takeNumber(text, 255, number)) return 0;
    address = address << 8 | number;
  }
  return text.empty() ? address : 0;
}

std::string formatIpv4(std::uint32_t address) {
  return fmt::format("{}.{}.{}.{}", address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF, address & 0xFF);
}

int Network::prefix() const { return std::popcount(mask); }

std::string Network::text() const { return fmt::format("{}/{}", formatIpv4(address & mask), prefix()); }

Network parseNetwork(std::string_view text) {
  const std::size_t slash = text.find('/');
  const std::uint32_t address = parseIpv4(text.substr(0, slash));
  if (slash == std::string::npos) return {address, address == 0 ? 0 : maskOf(32)};
  std::string_view mask = text.substr(slash + 1);
  if (mask.find('.') != std::string::npos) return {address, parseIpv4(mask)};
  unsigned prefix = 0;
  return {address, takeNumber(mask, 32, prefix) && mask.empty() ? maskOf(prefix) : maskOf(32)};
}

}  // namespace fringix::tool::diagnosis
