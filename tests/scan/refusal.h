// What the scan library says of what it does not take.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "scan/failure.h"

namespace fringix::scan::test {

// The text of the failure that a call ends with, which has to be of this status; empty when nothing is refused.
inline std::string refusal(Status status, const std::function<void()>& call) {
  try {
    call();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), status) << failure.what();
    return failure.what();
  }
  return "";
}

}  // namespace fringix::scan::test
