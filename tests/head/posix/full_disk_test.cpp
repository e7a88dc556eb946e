// What the head writes, on a disk that is soon full.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "head/model/data_store.h"
#include "head/optics/patterns.h"
#include "head/program/pattern_files.h"
#include "support/posix/small_disk.h"

namespace fringix::head {
namespace {

using test::namesIn;
using test::readBytes;
using test::SmallDisk;
using Names = std::vector<std::string>;

TEST(HeadOnFullDisk, BlockThatHasNoRoomLeavesTheOldOne) {
  const SmallDisk disk("64k");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  HeadSettings settings;
  settings.storage = disk.path().string();
  const auto store = makeDataStore(settings);
  EXPECT_EQ(store->save("a", Block(10, 1)), Status::ok);
  EXPECT_EQ(store->save("a", Block(1 << 20, 2)), Status::storageFailed);
  MemoryBudget enough(1 << 20);
  EXPECT_EQ(*store->load("a", enough).block, Block(10, 1));
  EXPECT_EQ(store->save("b", Block(1 << 20, 2)), Status::storageFailed);
  EXPECT_EQ(namesIn(disk.path()), (Names{".lock", "a"}));
  EXPECT_EQ(store->save("b", Block(40000, 3)), Status::ok) << "the room is free again";
}

TEST(HeadOnFullDisk, PatternThatHasNoRoomIsToldAndLeavesTheOldOne) {
  const SmallDisk disk("8k");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  const auto write = patternWriter(disk.path().string(), 7);
  write(1, 0, makeUniform({32, 20}, 200));
  const std::string old = readBytes(disk / "7-1-000.png");
  Pattern noise = makeUniform({100, 100}, 0);
  for (std::size_t i = 0; i < noise.pixels.size(); ++i) noise.pixels[i] = grey(static_cast<std::uint8_t>(i * i / 7 * i));
  testing::internal::CaptureStderr();
  write(1, 0, noise);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "fringix-head: cannot write \"" + (disk / "7-1-000.png").string() + "\": No space left on device\n");
  EXPECT_EQ(readBytes(disk / "7-1-000.png"), old);
  EXPECT_EQ(namesIn(disk.path()), Names{"7-1-000.png"});
}

TEST(HeadOnFullDisk, OutputThatCannotBeWrittenIsAFailure) {
  const test::ScratchFolder scratch;
  const std::string told = (scratch / "told").string();
  for (const char* arguments : {"--help", "--camera 64x48 --projector 32x20"}) {
    const std::string command = std::string("timeout 20 " FRINGIX_HEAD " ") + arguments + " >/dev/full 2>" + told;
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1) << arguments;
    EXPECT_EQ(readBytes(told), "fringix-head: the output could not be written\n") << arguments;
  }
}

}  // namespace
}  // namespace fringix::head
