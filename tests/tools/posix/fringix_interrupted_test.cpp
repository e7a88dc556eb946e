// Scans and benchmarks ended by Ctrl-C: old files stay, and the head is left as it was.
#include <gtest/gtest.h>

#include <atomic>

#include "../program.h"
#include "../small_head.h"
#include "head/serving/head_server.h"
#include "support/child_process.h"
#include "support/eventually.h"

namespace fringix::test {
namespace {

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

// It ends its first part and begins no other one.
TEST(FringixInterrupted, BenchmarkTellsWhatItHas) {
  std::atomic<int> asked = 0;  // the first time does not count
  head::HeadServer server(smallHead(), [&](head::Happening happening, const std::string&, const std::string& text) {
    if (happening == head::Happening::command && text == "56MSG_SLGetGain") ++asked;
  });
  server.start();
  ChildProcess program(FRINGIX_TOOL, {"bench", "127.0.0.1", "--seconds", "86400"});
  ASSERT_TRUE(eventually([&] { return asked > 1; }));
  ASSERT_TRUE(program.interrupt());
  EXPECT_NE(program.waitForLine("command (SLGetGain)"), "");
  EXPECT_NE(program.waitForLine("Ended before everything was measured."), "");
  EXPECT_EQ(program.wait(), 0);
}

}  // namespace
}  // namespace fringix::test
