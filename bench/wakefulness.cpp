#include "wakefulness.h"

#include "machine.h"

namespace fringix::bench {

namespace {

void spin(std::size_t core) {
  pinTo(core);
  runAtIdlePriority();
  for (volatile bool forEver = true; forEver;) {
  }
}

}  // namespace

Wakefulness::Wakefulness(std::size_t core) : spinner_([core] { spin(core); }) {}

}  // namespace fringix::bench
