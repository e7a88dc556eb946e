// What a head answers to a command: 0, or the reason of a refusal. Clients only tell 0 from anything else.
#pragma once

#include <cstdint>

namespace fringix::head {

enum class Status : std::int32_t {
  ok = 0,
  badParameter = -3,     // a number that means nothing, an image that the sequence does not have, a wrong count of bytes
  outOfMemory = -4,      // the head's own memory limit
  unknownSequence = -20  // never allocated, or freed
};

}  // namespace fringix::head
