// One thing that is done to the library in a random sequence: small numbers, of which 0 is always the simplest.
#pragma once

#include <string>
#include <vector>

namespace fringix::test {

struct Step {
  int kind = 0;    // hundredths: what is done
  int slot = 0;    // the session
  int which = 0;   // of many
  int damage = 0;  // what is wrong with the head; mostly nothing
  int place = 0;   // where
};

using Steps = std::vector<Step>;

std::string describe(const Steps& steps);

}  // namespace fringix::test
