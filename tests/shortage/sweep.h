// Plays something again and again, each time with another call of the system failing, until it passes without having met the failure.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace fringix::test {

struct Fault {
  int function;
  int failure;
  unsigned first;
  bool lasting;
  unsigned struck = 0;

  bool isHarmless() const;  // whoever meets it tries again, or goes on where it was
  bool isOf(const std::string& name) const;
};

std::string text(const Fault& fault);

bool everyFault();  // FRINGIX_EVERY_FAULT in the environment: those that last, too

struct Scenario {
  std::string name;
  std::function<void()> body;                                   // what meets the faults, on a thread of its own, with all that it starts
  std::function<testing::AssertionResult(const Fault&)> check;  // behind each, on the thread of the test
  bool lasts = everyFault();                                    // whether faults that last are among them
  unsigned step = 1;                                            // from one call that fails to the next
};

// Ends the process when the scenario hangs. A fault with another outcome than it may have is played again, and fails the test the third
// time: time limits of the library run out on a machine that is busy enough. Prints how many faults struck, of which one that lasts is one.
// Gives the blocks of memory that are left of all of it.
long sweep(const Scenario& scenario);

// All faults that have struck in this process, by function and failure.
void printTally();

}  // namespace fringix::test
