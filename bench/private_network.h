// A network for the benchmark alone, where every connection is treated alike.
#pragma once

#include <array>

namespace fringix::bench {

// The networks there, by their broadcast addresses: the loopback's own, and two of the ranges that are set aside for examples.
inline constexpr std::array<const char*, 3> privateNetworks = {"127.255.255.255", "198.51.100.255", "203.0.113.255"};

// Moves the process away from the machine's networks into these, which nobody else has, so that its ports are free and what it
// broadcasts disturbs nobody. False: the system does not permit it.
bool enterPrivateNetworks();

// Fixes what the kernel otherwise tunes for each connection by its history: the receive window, and the sender's pace. With the
// kernel's tuning two identical clients differ by up to half. Only in the private networks. False: the system does not permit it.
bool fixConnections();

}  // namespace fringix::bench
