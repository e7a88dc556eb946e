// Measures what a network and a head give.
#pragma once

#include <chrono>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <functional>
#include <optional>
#include <string>

#include "benchmark/findings.h"

namespace fringix::tool {

struct BenchTask {
  std::chrono::duration<double> time{10};      // shared by all that is measured; of each there is one sample at least
  bool scan = false;                           // projects patterns, and overwrites the pictures that the head has stored
  std::optional<std::uint32_t> triggerLine{};  // an output that is wired to the head's trigger input
};

// Tells what it begins to measure. Puts what it finds into `findings` as it goes, so that it is there when Error is thrown, because the
// connection is lost. Ctrl-C ends it early.
void measure(const Device& head, const BenchTask& task, Findings& findings, const std::function<void(const std::string&)>& tell);

}  // namespace fringix::tool
