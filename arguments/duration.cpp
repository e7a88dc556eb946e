#include "arguments/duration.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <map>
#include <string_view>
#include <system_error>

#include "arguments/usage_error.h"

namespace fringix::arguments {

std::chrono::milliseconds toDuration(const std::string& text) {
  static const std::map<std::string_view, double> milliseconds{{"ms", 1}, {"s", 1000}, {"min", 60000}, {"", 1000}};
  constexpr double longest = 24 * 60 * 60000.0;
  const char* const end = text.data() + text.size();
  double number = 0;
  const auto [behind, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  const auto unit = milliseconds.find(std::string_view(behind, static_cast<std::size_t>(end - behind)));
  const double time = error != std::errc() || unit == milliseconds.end() ? 0 : number * unit->second;
  if (time >= 1 && time <= longest) return std::chrono::milliseconds(std::lround(time));
  throw UsageError(fmt::format("\"{}\" is no time such as 1s, 500ms or 2min, from 1ms to 1440min", text));
}

}  // namespace fringix::arguments
