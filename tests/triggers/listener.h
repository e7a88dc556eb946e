// The process in listener_process.h, from inside.
#pragma once

#include <string>

namespace fringix::test {

// Has one session. It prints "trigger TIME" for each trigger, and does what the lines of its input say: open and close the session, print
// the library's trace so far, its processor time, its open descriptors.
int runListener(const std::string& address);

}  // namespace fringix::test
