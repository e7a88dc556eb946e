// Opening the session with the head that a command line names.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <string>

namespace fringix::tool {

// What all subcommands share; filled by the time one runs.
struct Context {
  std::string address;  // what stands for it while it is not known yet: "serial number 1001"
  bool bySerial = false;
  std::int32_t serial = 0;
};

// Opens the session with the head named on the command line, and then knows its address. On a terminal a line says so while it blocks.
Device openHead(Context& context);

// Whether the library still has a connection to the head. Asks the library only.
bool isConnected(const Device& head);

}  // namespace fringix::tool
