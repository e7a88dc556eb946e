// Programs that tests start.
#pragma once

#include <windows.h>

#include <string>

namespace fringix::test {

// The process, for its caller to close; it has these as its standard handles. Throws when it cannot be started.
HANDLE startProcess(std::wstring line, HANDLE input, HANDLE output, HANDLE errors);

}  // namespace fringix::test
