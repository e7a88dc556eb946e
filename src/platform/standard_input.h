// The input that a program was given.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fringix::platform {

class StandardInput {
 public:
  StandardInput() noexcept;  // at the program's start: an input that was closed then stays without a word, whatever is opened later
  ~StandardInput();
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;

  // Blocks until something is there. Bytes read; 0 at the end, when there is no input, and for a terminal that has given the program
  // to the background: the program goes on instead of being stopped. The end of the process ends a blocked read.
  std::size_t read(char* buffer, std::size_t size) noexcept;

 private:
  std::intptr_t native_;
};

}  // namespace fringix::platform
