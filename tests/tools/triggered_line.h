// What a program says when a head's GPIO input is triggered.
#pragma once

#include <chrono>
#include <string>

#include "head/serving/head_server.h"
#include "support/child_process.h"

namespace fringix::test {

// The program's next line after a trigger. A listener that has just been started may miss the first one.
inline std::string lineAfterTrigger(ChildProcess& program, head::HeadServer& head) {
  for (int i = 0; i < 10; ++i) {
    head.raiseTrigger();
    if (const auto line = program.nextLine(std::chrono::seconds(1))) return *line;
  }
  return "nothing";
}

}  // namespace fringix::test
