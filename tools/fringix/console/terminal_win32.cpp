#include "console/terminal.h"

#include <io.h>
#include <windows.h>

namespace fringix::tool {

// _isatty takes every character device for a terminal, NUL too.
bool isTerminal(std::FILE* stream) {
  DWORD mode = 0;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))), &mode) != 0;
}

}  // namespace fringix::tool
