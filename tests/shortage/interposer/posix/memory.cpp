// Memory. What the C library keeps under these names does not lead back here.
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "interposer/posix/real.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

using namespace fringix::shortage;

namespace {

template <class Take>
void* taken(Take&& take) noexcept {
  if (const int failure = strike(memory); failure != nothing) return failed(failure, nullptr);
  void* const block = take();
  if (block != nullptr && watched()) noteBlocks(1);
  return block;
}

}  // namespace

FRINGIX_INTERPOSED void* malloc(std::size_t size) noexcept {
  return taken([&] { return __libc_malloc(size); });
}

FRINGIX_INTERPOSED void* calloc(std::size_t count, std::size_t size) noexcept {
  return taken([&] { return __libc_calloc(count, size); });
}

FRINGIX_INTERPOSED void* realloc(void* block, std::size_t size) noexcept {
  if (block == nullptr) return malloc(size);
  if (const int failure = strike(memory); failure != nothing) return failed(failure, nullptr);
  void* const moved = __libc_realloc(block, size);
  if (size == 0 && watched()) noteBlocks(-1);
  return moved;
}

FRINGIX_INTERPOSED void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return taken([&] { return __libc_memalign(alignment, size); });
}

FRINGIX_INTERPOSED void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept { return memalign(alignment, size); }

FRINGIX_INTERPOSED int posix_memalign(void** place, std::size_t alignment, std::size_t size) noexcept {
  void* const block = memalign(alignment, size);
  if (block == nullptr) return ENOMEM;
  *place = block;
  return 0;
}

FRINGIX_INTERPOSED void free(void* block) noexcept {
  if (block != nullptr && watched()) noteBlocks(-1);
  __libc_free(block);
}

FRINGIX_INTERPOSED void* mmap(void* place, std::size_t size, int protection, int flags, int file, off_t offset) noexcept {
  if (const int failure = strike(mapping); failure != nothing) return failed(failure, MAP_FAILED);
  return reinterpret_cast<void*>(syscall(SYS_mmap, place, size, protection, flags, file, offset));
}

FRINGIX_INTERPOSED void* mmap64(void* place, std::size_t size, int protection, int flags, int file, off64_t offset) noexcept {
  return mmap(place, size, protection, flags, file, offset);
}
