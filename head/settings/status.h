// What a head answers to a command: 0, or the reason of a refusal. Clients only tell 0 from anything else.
#pragma once

#include <cstdint>

namespace fringix::head {

enum class Status : std::int32_t {
  ok = 0,
  badParameter = -3,      // a number or a name that means nothing or is out of range, a wrong count of bytes
  outOfMemory = -4,       // the head's own memory limit
  unknownSequence = -20,  // never allocated, or freed
  unknownKey = -21,       // of a configuration value
  storageFailed = -22,    // the folder for data blocks cannot be written to
  noAnswer = -23          // from the device at the serial port
};

}  // namespace fringix::head
