// The built program on a full disk, with special files, and ended by Ctrl-C: what was there before stays.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>

#include "../program.h"
#include "../small_head.h"
#include "files/files.h"
#include "head/serving/head_server.h"
#include "png/png_decoder.h"
#include "png/png_writer.h"
#include "support/child_process.h"
#include "support/eventually.h"
#include "support/posix/small_disk.h"

namespace fringix::test {
namespace {

using Names = std::vector<std::string>;

TEST(FringixOnFullDisk, EveryCommandThatWritesLeavesTheOldFile) {
  const ScratchFolder scratch;
  const SmallDisk disk("4k");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  head::HeadSettings settings = smallHead();
  settings.camera = {640, 480};
  head::HeadServer server(settings);
  server.start();
  const std::string block = inQuotes(scratch / "block");
  writeBytes(scratch / "block", std::string(1 << 20, 'x'));
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "data save 127.0.0.1 block " + block).exitCode, 0);
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "live 127.0.0.1 -o " + inQuotes(scratch / "live.png")).exitCode, 0);
  const std::string out = inQuotes(disk / "out.png");
  const std::string input = inQuotes(scratch / "live.png");
  for (const std::string& command : {std::string("live 127.0.0.1"), std::string("data load 127.0.0.1 block"), "sheet " + input}) {
    writeBytes(disk / "out.png", "old");
    const Outcome outcome = runProgram(FRINGIX_TOOL, command + " -o " + out);
    EXPECT_EQ(outcome.exitCode, 1) << command;
    EXPECT_EQ(outcome.errors, "fringix: cannot write " + out + ": No space left on device\n") << command;
    EXPECT_EQ(readBytes(disk / "out.png"), "old") << command;
    EXPECT_EQ(namesIn(disk.path()), Names{"out.png"}) << command;
  }
}

TEST(FringixSpecialFiles, OutputThatCannotBeWrittenIsAFailure) {
  head::HeadServer server(smallHead());
  server.start();
  for (const char* command : {"live 127.0.0.1 -o -", "data load 127.0.0.1 block -o -"}) {
    const ScratchFolder scratch;
    writeBytes(scratch / "block", "block");
    ASSERT_EQ(runProgram(FRINGIX_TOOL, "data save 127.0.0.1 block " + inQuotes(scratch / "block")).exitCode, 0);
    const Outcome outcome = runProgram(FRINGIX_TOOL, std::string(command) + " 2>" + inQuotes(scratch / "told") + " >/dev/full; echo $?");
    EXPECT_EQ(outcome.output, "1\n") << command;
    EXPECT_EQ(readBytes(scratch / "told"), "fringix: cannot write standard output: No space left on device\n");
  }
}

TEST(FringixSpecialFiles, AreRefusedWithoutWaiting) {
  const ScratchFolder scratch;
  const std::string pipe = inQuotes(scratch / "pipe");
  ASSERT_EQ(mkfifo((scratch / "pipe").c_str(), 0600), 0);
  for (const std::string& file : {pipe, std::string("\"/dev/zero\"")}) {
    for (const char* command : {"data save 127.0.0.1 block ", "show 127.0.0.1 ", "mask 127.0.0.1 ", "pattern upload 127.0.0.1 1 ",
                                "pattern column 127.0.0.1 1 0 ", "sheet "}) {
      const Outcome outcome = runProgram(FRINGIX_TOOL, command + file);
      EXPECT_EQ(outcome.exitCode, 1) << command << file;
      EXPECT_EQ(outcome.errors, "fringix: cannot read " + file + ": it is no regular file\n") << command;
    }
  }
}

// Every picture that has a name is whole, and nothing else is left.
TEST(FringixInterrupted, SeriesOfPictures) {
  const ScratchFolder scratch;
  head::HeadServer server(smallHead());
  server.start();
  writeBytes(scratch / "live-000003.png", "old");
  ChildProcess program(FRINGIX_TOOL, {"live", "127.0.0.1", "-n", "999999", "-o", (scratch / "live.png").string()});
  ASSERT_TRUE(eventually([&] { return namesIn(scratch.path()).size() > 20; }));
  ASSERT_TRUE(program.interrupt());
  EXPECT_EQ(program.wait(), std::nullopt) << "ended by the signal";
  for (const std::string& name : namesIn(scratch.path())) EXPECT_EQ(decodePng(readBytes(scratch / name)).width, 64U) << name;
}

TEST(FringixInterrupted, BlockThatIsOnItsWay) {
  const ScratchFolder scratch;
  head::HeadServer server(smallHead());
  server.start();
  writeBytes(scratch / "block", std::string(64 << 20, 'x'));
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "data save 127.0.0.1 block " + inQuotes(scratch / "block")).exitCode, 0);
  for (const int milliseconds : {1, 20, 40, 60, 100}) {
    writeBytes(scratch / "out", "old");
    ChildProcess program(FRINGIX_TOOL, {"data", "load", "127.0.0.1", "block", "-o", (scratch / "out").string()});
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    ASSERT_TRUE(program.interrupt());
    program.wait();
    const std::string bytes = readBytes(scratch / "out");
    EXPECT_TRUE(bytes == "old" || bytes.size() == std::size_t{64} << 20) << bytes.size();
    EXPECT_EQ(namesIn(scratch.path()), (Names{"block", "out"}));
  }
}

// While patterns are uploaded, and while the first of three exposures is measured, which takes some seconds in all.
TEST(FringixInterrupted, ScanThatIsUnderWay) {
  for (const std::uint32_t lastPattern : {0U, 18U}) {
    head::HeadSettings settings = smallHead();
    settings.camera = {160, 128};
    settings.projector = {640, 400};
    settings.imageTime = std::chrono::milliseconds(100);
    std::atomic<bool> stored = false;
    settings.patternStored = [&](std::uint32_t, std::uint32_t image, const head::Pattern&) { stored = stored || image == lastPattern; };
    head::HeadServer server(settings);
    server.start();
    const ScratchFolder scratch;
    const std::vector<std::string> names = {"cloud.pcd", "cloud.ply", "raw-00.png", "scan.json"};
    for (const std::string& name : names) writeBytes(scratch / name, "old");
    ChildProcess program(FRINGIX_TOOL, {"scan", "127.0.0.1", "--raw", "--hdr", "3", "-o", scratch.path().string()});
    ASSERT_TRUE(eventually([&] { return stored.load(); }));
    ASSERT_TRUE(program.interrupt());
    EXPECT_NE(program.waitForLine("the scan was ended before it was done"), "");
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(namesIn(scratch.path()), names);
    for (const std::string& name : names) EXPECT_EQ(readBytes(scratch / name), "old") << name;
    EXPECT_EQ(runProgram(FRINGIX_TOOL, "get 127.0.0.1 exposure").output, "20000\n") << "as before";
    EXPECT_NE(runProgram(FRINGIX_TOOL, "pattern free 127.0.0.1 1").exitCode, 0) << "the scan has freed its sequence";
  }
}

}  // namespace
}  // namespace fringix::test
