// Opening the session with the head that a command line names.
#pragma once

#include <chrono>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <string>

namespace fringix::tool {

// What all subcommands share; filled by the time one runs.
struct Context {
  std::string address;  // what stands for it while it is not known yet: "serial number 1001"
  bool bySerial = false;
  std::int32_t serial = 0;
  std::chrono::milliseconds timeout{5000};
  bool json = false;
};

// Finds the address of the head named on the command line: looks its name up, or searches for its serial number.
void findAddress(Context& context);

// Opens the session with the head at an address. Throws Failure when no head answers there in time.
Device openAt(const std::string& address, std::chrono::milliseconds timeout);

// Both. On a terminal a line says what it waits for.
Device openHead(Context& context);

// Throws Failure unless the head has that camera. Channel 0 is on every head, and is not asked for.
void requireChannel(const Device& head, std::uint32_t channel, const std::string& address);

// Whether the library still has a connection to the head. Asks the library only.
bool isConnected(const Device& head);

}  // namespace fringix::tool
