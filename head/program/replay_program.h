// What fringix-head does with a recording.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "head/program/options.h"

namespace fringix::head {

// Answers clients from it until `stopRequested`. False: a client said something else than the recorded one. Throws what the server does.
bool replay(const Options& options, const std::atomic<bool>& stopRequested, const std::function<void(const std::string&)>& printLine);

}  // namespace fringix::head
