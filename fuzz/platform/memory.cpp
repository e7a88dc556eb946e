// A machine with little memory: what a peer may make the library ask for is refused at once, instead of taking its time.
#include <cstdlib>
#include <new>

#include "platform/block_memory.h"

namespace {

constexpr std::size_t largest = std::size_t{1} << 20;

}  // namespace

namespace fringix::platform {

void* allocateBlock(std::size_t size) noexcept { return size <= largest ? std::malloc(size) : nullptr; }
void freeBlock(void* block) noexcept { std::free(block); }

}  // namespace fringix::platform

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return size <= largest ? ::operator new[](size) : nullptr;
  } catch (...) {
    return nullptr;
  }
}
