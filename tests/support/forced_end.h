// What becomes of a worker that does not end in time.
#pragma once

namespace fringix::test {

// True: the system ends it by force, where it is. False: it goes on, abandoned.
bool workersAreEndedByForce();

}  // namespace fringix::test
