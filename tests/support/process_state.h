// What the running process holds and has used.
#pragma once

#include <chrono>
#include <cstddef>

namespace fringix::test {

std::chrono::microseconds processorTime();
std::size_t threadCount();
std::size_t descriptorCount();  // open descriptors or handles
std::size_t residentBytes();

}  // namespace fringix::test
