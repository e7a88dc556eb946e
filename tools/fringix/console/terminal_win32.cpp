#include "console/terminal.h"

#include <io.h>
#include <windows.h>

#include <cstdlib>

namespace fringix::tool {

// _isatty takes every character device for a terminal, NUL too.
bool isTerminal(std::FILE* stream) {
  DWORD mode = 0;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))), &mode) != 0;
}

// Older consoles refuse.
bool takesColours(std::FILE* stream) {
  const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
  DWORD mode = 0;
  if (std::getenv("NO_COLOR") != nullptr || !GetConsoleMode(console, &mode)) return false;
  return SetConsoleMode(console, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace fringix::tool
