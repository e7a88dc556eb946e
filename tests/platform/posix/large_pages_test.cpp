// A large block costs no page fault for each 4 KiB, where the system has larger pages.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>
#include <fstream>
#include <string>

#include "platform/block_memory.h"

namespace fringix::platform {

namespace {

bool systemHasLargePages() {
  std::string modes;
  std::getline(std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled"), modes);
  return modes.find("[always]") != std::string::npos || modes.find("[madvise]") != std::string::npos;
}

long pageFaults() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

TEST(LargePagesTest, ALargeBlockIsMadeOfThem) {
  if (!systemHasLargePages()) GTEST_SKIP() << "the system has no large pages for programs that ask for them";
  constexpr std::size_t size = std::size_t{64} << 20;
  const long before = pageFaults();
  void* const block = allocateBlock(size);
  ASSERT_NE(block, nullptr);
  std::memset(block, 1, size);
  const long faults = pageFaults() - before;
  freeBlock(block);
  EXPECT_LT(faults, static_cast<long>(size / 4096 / 4)) << "memory may be too scattered for some of them, not for most";
}

}  // namespace

}  // namespace fringix::platform
