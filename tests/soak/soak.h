// Many sessions with heads that do wrong, for as long as one likes: nothing may be given that may not be, and nothing may grow.
#pragma once

#include "soak/plan.h"

namespace fringix::test {

// Prints a line now and then, and what came of it at the end. Whether nothing was wrong.
bool soak(const SoakPlan& plan);

}  // namespace fringix::test
