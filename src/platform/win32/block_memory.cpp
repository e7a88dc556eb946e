#include "platform/block_memory.h"

#include <cstdlib>

namespace fringix::platform {

// Large pages need a privilege that programs do not have.
void* allocateBlock(std::size_t size) noexcept { return std::malloc(size); }

void freeBlock(void* block) noexcept { std::free(block); }

}  // namespace fringix::platform
