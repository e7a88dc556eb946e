#include "arguments/number.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "arguments/usage_error.h"

namespace fringix::arguments {
namespace {

template <class Number>
std::from_chars_result read(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  if constexpr (std::is_integral_v<Number>) {
    if (text.starts_with("0x")) return std::from_chars(text.data() + 2, end, number, 16);
  }
  return std::from_chars(text.data(), end, number);
}

// Bounds of 64 bits are none to a reader.
template <class Number>
Limits narrowed(Limits limits) {
  if constexpr (sizeof(Number) < sizeof(std::int64_t)) {
    limits.low = std::fmax(limits.low, double{std::numeric_limits<Number>::lowest()});
    limits.high = std::fmin(limits.high, double{std::numeric_limits<Number>::max()});
  } else if constexpr (std::is_unsigned_v<Number>) {
    limits.low = std::fmax(limits.low, 0);
  }
  return limits;
}

std::string describe(const Limits& limits) {
  if (std::isfinite(limits.high)) return fmt::format(" from {} to {}", limits.low, limits.high);
  return std::isfinite(limits.low) ? fmt::format(" of at least {}", limits.low) : "";
}

bool contains(const Limits& limits, double number) { return limits.low <= number && number <= limits.high; }

}  // namespace

template <class Number>
Number toNumber(const std::string& text, const Limits& limits) {
  Number number{};
  const auto [end, error] = read(text, number);
  const bool readable = error == std::errc() && end == text.data() + text.size();
  if (readable && contains(limits, static_cast<double>(number))) return number;
  throw UsageError(fmt::format("\"{}\" is no number{}", text, describe(narrowed<Number>(limits))));
}

template std::int32_t toNumber<std::int32_t>(const std::string&, const Limits&);
template std::uint32_t toNumber<std::uint32_t>(const std::string&, const Limits&);
template std::int64_t toNumber<std::int64_t>(const std::string&, const Limits&);
template std::uint64_t toNumber<std::uint64_t>(const std::string&, const Limits&);
template double toNumber<double>(const std::string&, const Limits&);

}  // namespace fringix::arguments
