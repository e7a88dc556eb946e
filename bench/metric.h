// What is read off a batch of calls.
#pragma once

#include <cstddef>
#include <string_view>

namespace fringix::bench {

// Calls of one client, one right after the other.
struct Batch {
  std::size_t calls = 0;
  std::size_t bytesPerCall = 0;
  double seconds = 0;
  double processorSeconds = 0;  // of the client's process, all its threads
  double serverSeconds = 0;     // processor time of the server meanwhile
  double medianLatency = 0;     // seconds
};

enum class Metric { medianLatency, processorPerGigabyte, throughput, callRate, serverLoad };

std::string_view nameOf(Metric metric);  // with its unit; a gigabyte is 10^9 bytes
bool moreIsBetter(Metric metric);
double valueOf(Metric metric, const Batch& batch);

}  // namespace fringix::bench
