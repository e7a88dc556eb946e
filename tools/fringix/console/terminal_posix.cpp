#include "console/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace fringix::tool {

bool isTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

bool takesColours(std::FILE* stream) {
  const char* const kind = std::getenv("TERM");
  return isTerminal(stream) && std::getenv("NO_COLOR") == nullptr && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

}  // namespace fringix::tool
