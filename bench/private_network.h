// A network for the benchmark alone, where every connection is treated alike.
#pragma once

namespace fringix::bench {

// Moves the process into an empty network with a loopback of its own, so that its ports are free, and fixes there what the
// kernel otherwise tunes for each connection by its history: the receive window, and the sender's pace. With the kernel's
// tuning two identical clients differ by up to half. False: the system does not permit it, or not all of it.
bool enterPrivateNetwork();

}  // namespace fringix::bench
