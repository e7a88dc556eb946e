#include "heads/time_text.h"

#include <fmt/format.h>

#include <charconv>
#include <map>
#include <string_view>
#include <system_error>

#include "arguments/usage_error.h"

namespace fringix::tool {

double parseSeconds(const std::string& text) {
  static const std::map<std::string_view, double> units{{"ms", 0.001}, {"s", 1}, {"min", 60}, {"", 1}};
  constexpr double longest = 24 * 60 * 60;
  const char* const end = text.data() + text.size();
  double number = 0;
  const auto [behind, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  const auto unit = units.find(std::string_view(behind, static_cast<std::size_t>(end - behind)));
  const double seconds = error != std::errc() || unit == units.end() ? 0 : number * unit->second;
  if (seconds >= 0.001 && seconds <= longest) return seconds;
  throw arguments::UsageError(fmt::format("\"{}\" is no time such as 1s, 500ms or 2min, from 1ms to 1440min", text));
}

}  // namespace fringix::tool
