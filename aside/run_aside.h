// Work that nobody waits for, because nothing can end it: a look-up, a person who may type.
#pragma once

#include <functional>

namespace fringix {

// Runs `work` on a thread of its own, which goes on until `work` returns or the process ends. Throws std::system_error when there can
// be no more threads.
void runAside(std::function<void()> work);

}  // namespace fringix
