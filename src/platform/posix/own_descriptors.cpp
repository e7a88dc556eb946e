#include "platform/posix/own_descriptors.h"

#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/process_wide.h"

namespace fringix::platform {

namespace {

constexpr int mostDescriptors = 1 << 20;  // what Linux grants a process unless it is told otherwise; of later ones a child keeps its copies
constexpr int bitsOfAWord = 64;

std::atomic<std::uint64_t> owned[mostDescriptors / bitsOfAWord];
std::atomic<int> usedWords{0};

std::atomic<std::uint64_t>& wordOf(int descriptor) noexcept { return owned[descriptor / bitsOfAWord]; }
std::uint64_t bitOf(int descriptor) noexcept { return std::uint64_t{1} << (descriptor % bitsOfAWord); }

void closeAllOfAWord(int word) noexcept {
  std::uint64_t bits = owned[word].exchange(0);
  for (int bit = 0; bits != 0; ++bit, bits >>= 1) {
    if ((bits & 1) != 0) close(word * bitsOfAWord + bit);
  }
}

void closeCopies() noexcept {
  for (int word = 0; word < usedWords; ++word) closeAllOfAWord(word);
}

[[maybe_unused]] const bool told = inForkedChildren(closeCopies);

}  // namespace

void own(int descriptor) noexcept {
  if (descriptor < 0 || descriptor >= mostDescriptors) return;
  wordOf(descriptor) |= bitOf(descriptor);
  const int words = descriptor / bitsOfAWord + 1;
  for (int used = usedWords; used < words && !usedWords.compare_exchange_weak(used, words);) {
  }
}

void closeOwn(int descriptor) noexcept {
  const bool known = descriptor < mostDescriptors;
  if (known && (wordOf(descriptor).fetch_and(~bitOf(descriptor)) & bitOf(descriptor)) == 0) return;
  close(descriptor);
}

}  // namespace fringix::platform
