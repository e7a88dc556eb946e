// A host that loads the library, works with it and lets go of it, again and again: a plug-in of its own, or one that it starts anew.
#include <gtest/gtest.h>

#include <filesystem>
#include <string_view>

#include "abi/greeting_head.h"
#include "abi/loaded_library.h"
#include "fringix/fringix.h"
#include "support/process_state.h"
#include "support/sanitizers.h"
#include "support/scratch_folder.h"

namespace fringix::test {

namespace {

// Where a library really goes, each turn takes milliseconds: ./run portable has a thousand of them.
constexpr bool unloads = std::string_view(LIBRARY_FILE).ends_with(".dll");
constexpr int warmUp = 20;
constexpr int rounds = unloads ? 100 : 1000;
constexpr int roundsWithoutSession = rounds / 2;  // for each one with: to close takes a session 100 ms
constexpr std::size_t noise = std::size_t{128} << 10;

void useSession(const LoadedLibrary& library) {
  const ScriptedHead started(greetingHead());
  std::int32_t handle = -1;
  std::int32_t gain = -1;
  EXPECT_EQ(library.function("SLDevAlloc", SLDevAlloc)("127.0.0.1", &handle), SLALL_OKAY);
  EXPECT_EQ(library.function("SLGetGain", SLGetGain)(handle, &gain), SLALL_OKAY);
  EXPECT_EQ(gain, gainOfTheHead);
  EXPECT_EQ(library.function("SLDevFree", SLDevFree)(handle), SLALL_OKAY);
}

// This program is linked with the library: another file is another library.
class LoadingTest : public testing::Test {
 protected:
  LoadingTest() { std::filesystem::copy_file(LIBRARY_FILE, file_); }

  void load(int times) const {
    for (int i = 0; i < times; ++i) {
      const LoadedLibrary library(file_);
      if (i % roundsWithoutSession == 0) useSession(library);
      ASSERT_EQ(library.function("QORFringixVersion", QORFringixVersion)(), 4002);
    }
  }

  const ScratchFolder folder_;
  const std::filesystem::path file_ = folder_ / (unloads ? "copy.dll" : "copy.so");
};

TEST_F(LoadingTest, CostsNoMemoryHandlesOrThreadsHoweverOften) {
  load(warmUp);
  const std::size_t threads = threadCount();
  const std::size_t descriptors = descriptorCount();
  const std::size_t memory = residentBytes();
  load(rounds);
  EXPECT_EQ(threadCount(), threads);
  EXPECT_EQ(descriptorCount(), descriptors);
  if (builtWithSanitizers) GTEST_SKIP() << "a sanitizer keeps freed memory";
  const std::size_t afterwards = residentBytes();
  EXPECT_LT(afterwards, memory + noise);
  RecordProperty("growth", static_cast<int>(afterwards - memory));
}

// On Linux it stays for threads that were abandoned, on Windows there are none.
TEST_F(LoadingTest, EndsWithTheLastUserWhereNoThreadIsLeft) {
  ASSERT_FALSE(isLoaded(file_));
  load(1);
  EXPECT_EQ(isLoaded(file_), !unloads);
}

}  // namespace

}  // namespace fringix::test
