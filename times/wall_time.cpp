#include "times/wall_time.h"

#include "times/fields.h"

namespace fringix {

namespace {

using std::chrono::floor, std::chrono::milliseconds, std::chrono::seconds;

std::time_t wholeSeconds(WallTime time) { return std::chrono::system_clock::to_time_t(floor<seconds>(time)); }

std::string textOf(const std::optional<std::tm>& fields, const char* format) {
  char text[64];
  return fields ? std::string(text, std::strftime(text, sizeof text, format, &*fields)) : "";
}

}  // namespace

std::string localText(WallTime time, const char* format) { return textOf(localFields(wholeSeconds(time)), format); }

std::string universalText(WallTime time, const char* format) { return universalText(wholeSeconds(time), format); }

std::string universalText(std::time_t time, const char* format) { return textOf(universalFields(time), format); }

std::string millisecondText(WallTime time) {
  const auto count = floor<milliseconds>(time - floor<seconds>(time)).count();
  return "." + std::to_string(1000 + count).substr(1);
}

}  // namespace fringix
