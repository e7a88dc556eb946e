#include "platform/debug_output.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace fringix::platform {

void writeDebugOutput(const char* line) noexcept {
  // A line that standard error does not take is lost: tracing must never disturb a measurement.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, std::strlen(line));
}

int formatBounded(char* buffer, std::size_t limit, const char* format, std::va_list arguments) noexcept {
  const int length = std::vsnprintf(buffer, limit + 1, format, arguments);
  return length > static_cast<int>(limit) ? -1 : length;
}

}  // namespace fringix::platform
