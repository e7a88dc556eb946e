// What the running process holds and has used.
#pragma once

#include <chrono>
#include <cstddef>

namespace fringix::test {

std::chrono::microseconds processorTime();
std::size_t threadCount();
std::size_t descriptorCount();  // open descriptors or handles
std::size_t residentBytes();
std::size_t heapBytes();  // that were allocated and not freed; on Windows what the process alone has of the system's memory

}  // namespace fringix::test
