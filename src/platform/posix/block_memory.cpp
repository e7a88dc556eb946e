#include "platform/block_memory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace fringix::platform {

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
constexpr std::size_t smallestOfThem = 2 * largePage;

}  // namespace

void* allocateBlock(std::size_t size) noexcept {
  if (size < smallestOfThem) return std::malloc(size);
  void* block = nullptr;
  if (posix_memalign(&block, largePage, size) != 0) return nullptr;
  madvise(block, size / largePage * largePage, MADV_HUGEPAGE);  // a wish: without large pages it is memory all the same
  return block;
}

void freeBlock(void* block) noexcept { std::free(block); }

}  // namespace fringix::platform
