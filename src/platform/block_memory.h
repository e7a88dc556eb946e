// Memory for large blocks that are written once from end to end.
#pragma once

#include <cstddef>

namespace fringix::platform {

// At least `size` bytes, which is more than 0; null when there is no memory. What is not yet written to costs none. Where the system has
// large pages, a block of several of them begins on one and is made of them: a page is had at the first byte that is written to it.
void* allocateBlock(std::size_t size) noexcept;

void freeBlock(void* block) noexcept;  // null is allowed

}  // namespace fringix::platform
