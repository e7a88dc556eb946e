#include "platform/debug_output.h"

#include <windows.h>

#include <cstdio>

namespace fringix::platform {

void writeDebugOutput(const char* line) noexcept { OutputDebugStringA(line); }

int formatBounded(char* buffer, std::size_t limit, const char* format, std::va_list arguments) noexcept {
  return _vsnprintf_s(buffer, limit + 1, limit, format, arguments);
}

}  // namespace fringix::platform
