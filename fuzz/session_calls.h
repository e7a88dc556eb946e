// All calls that talk to a head, with arguments of the fuzzer's choice, and outputs of exactly the size that the caller owes.
#pragma once

#include <cstdint>
#include <span>

#include "fuzz/input.h"

namespace fringix::fuzz {

struct SessionCall {
  const char* name;
  std::int32_t (*run)(std::int32_t handle, Input& input);
  bool handsOn = false;  // the head's own number may be the result
};

std::span<const SessionCall> sessionCalls();

}  // namespace fringix::fuzz
