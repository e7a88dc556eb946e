// The command line of fringix-head.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "head/faults/fault.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

struct Options {
  HeadSettings first;
  int heads = 1;
  std::int32_t measurementFault = 0;
  std::vector<Fault> faults;                     // of every head
  std::chrono::milliseconds triggerInterval{0};  // between two GPIO triggers of every head; 0: none by themselves
  std::string patternFolder;                     // where every stored pattern is written to; empty: nowhere
  std::string replay;                            // a recording to answer from, in place of heads; empty: none
  bool atOnce = false;                           // not as slowly as recorded
  bool verbose = false;
};

// Nothing when only the help was asked for, which has been printed then. Throws arguments::UsageError.
std::optional<Options> parseOptions(int argc, const char* const* argv);

// Of head number `index`, counted from 0: the first one's, with the next address, serial number and model.
HeadSettings settingsOf(const Options& options, int index);

}  // namespace fringix::head
