#include "console/terminal.h"

#include <unistd.h>

namespace fringix::tool {

bool isTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

}  // namespace fringix::tool
