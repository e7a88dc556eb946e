// All exports that ask a head for something while a session is open, each with a call that succeeds.
#pragma once

#include <cstdint>
#include <vector>

#include "fringix/fringix.h"
#include "head/model/head_model.h"

namespace fringix::test {

enum class Reply {
  none,
  value,        // without a status
  status,       // a status word is its end
  levelStatus,  // one that the call hands on as it is
  picture
};

// What a call works with: a session, the head behind it where that is in this process, a sequence of two images there, and room for what
// the call gives.
struct Stage {
  std::int32_t handle;
  head::HeadModel* model;
  std::uint32_t sequence;
  alignas(8) std::uint8_t output[512];
};

struct Call {
  const char* name;
  const char* command;  // of the wire, without its number
  Reply reply;
  int (*run)(Stage& stage);
  int withoutPicture = SLSYSTEM_ERROR;
  int withoutConnection = SLSYSTEM_ERROR;
};

const std::vector<Call>& calls();

// The settings of a head that the calls suit.
head::HeadSettings headForCalls();
// Gives that head what they ask for; the sequence.
std::uint32_t prepare(head::HeadModel& model);

}  // namespace fringix::test
