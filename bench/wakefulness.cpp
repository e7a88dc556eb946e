#include "wakefulness.h"

#include <sched.h>

#include "descriptor.h"
#include "machine.h"

namespace fringix::bench {

namespace {

void spin(std::size_t core) {
  pinTo(core);
  const sched_param lowest{};
  if (sched_setscheduler(0, SCHED_IDLE, &lowest) != 0) throwSystemError("sched_setscheduler");
  for (volatile bool forEver = true; forEver;) {
  }
}

}  // namespace

Wakefulness::Wakefulness(std::size_t core) : spinner_([core] { spin(core); }) {}

}  // namespace fringix::bench
