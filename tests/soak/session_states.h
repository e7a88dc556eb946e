// What calls may give in each state of a session, whatever its head does and whoever else uses it meanwhile.
#pragma once

#include "faults/calls.h"

namespace fringix::test {

// What is known of a session at a moment. It may have failed already, or be about to be freed, without anybody knowing.
struct Knowledge {
  bool failed = false;   // a call has given SLCONNECTION_ERROR
  bool freeing = false;  // somebody has begun to free it
  bool freed = false;    // somebody's freeing has come to its end
};

// Whether the result may be the head's own number, which may be any.
bool handsOn(const Call& call);

bool mayGive(const Call& call, int result, Knowledge before, Knowledge after);

// For calls that the library answers by itself.
bool mayGiveByItself(int result, Knowledge before, Knowledge after);

bool mayBeFreedWith(int result, Knowledge before, bool byOthersToo);
bool mayBeOpenedWith(int result);

}  // namespace fringix::test
