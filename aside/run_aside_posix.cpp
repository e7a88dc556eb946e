#include <thread>
#include <utility>

#include "aside/run_aside.h"

namespace fringix {

void runAside(std::function<void()> work) { std::thread(std::move(work)).detach(); }

}  // namespace fringix
