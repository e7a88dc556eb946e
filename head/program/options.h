// The command line of fringix-head.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <string>

#include "head/settings/head_settings.h"

namespace fringix::head {

struct Options {
  HeadSettings first;
  int heads = 1;
  std::int32_t measurementFault = 0;
  std::chrono::milliseconds triggerInterval{0};  // between two GPIO triggers of every head; 0: none by themselves
  std::string patternFolder;                     // where every stored pattern is written to; empty: nowhere
  bool verbose = false;
};

// Throws what CLI11 throws; `app` then prints it.
Options parseOptions(CLI::App& app, int argc, char** argv);

// Of head number `index`, counted from 0: the first one's, with the next address, serial number and model.
HeadSettings settingsOf(const Options& options, int index);

}  // namespace fringix::head
