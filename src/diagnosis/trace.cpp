#include "diagnosis/trace.h"

#include <atomic>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/debug_output.h"

namespace fringix {

namespace {

constexpr std::size_t longestMessage = 4093;
constexpr char prefix[] = "<QOR> ";
constexpr char lineEnd[] = "\r\n";

std::atomic<std::int32_t> debugFlag{0};

std::size_t withoutTrailingSpace(const char* text, std::size_t length) noexcept {
  while (length > 0 && std::isspace(static_cast<unsigned char>(text[length - 1])) != 0) --length;
  return length;
}

}  // namespace

void setDebugFlag(std::int32_t flag) noexcept { debugFlag.store(flag, std::memory_order_relaxed); }
bool tracing() noexcept { return debugFlag.load(std::memory_order_relaxed) != 0; }

void trace(const char* format, ...) noexcept {
  if (!tracing()) return;
  constexpr std::size_t start = sizeof prefix - 1;
  char line[start + longestMessage + sizeof lineEnd] = {};
  std::memcpy(line, prefix, start);
  char* message = line + start;

  std::va_list arguments;
  va_start(arguments, format);
  const int formatted = platform::formatBounded(message, longestMessage, format, arguments);
  va_end(arguments);

  std::size_t length = formatted < 0 ? longestMessage : static_cast<std::size_t>(formatted);
  length = withoutTrailingSpace(message, length);
  std::memcpy(message + length, lineEnd, sizeof lineEnd);
  platform::writeDebugOutput(line);
}

}  // namespace fringix
