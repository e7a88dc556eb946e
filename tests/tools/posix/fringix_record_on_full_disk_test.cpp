// A recorder whose disk takes no more: the connection goes on.
#include <gtest/gtest.h>

#include "head/serving/head_server.h"
#include "support/child_process.h"
#include "support/posix/small_disk.h"
#include "tools/program.h"
#include "tools/small_head.h"

namespace fringix::test {
namespace {

TEST(FringixRecordOnFullDisk, TheRecordingEndsAndTheConnectionGoesOn) {
  const SmallDisk disk("64k");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  head::HeadSettings settings = smallHead();
  settings.camera = {640, 480};
  head::HeadServer server(settings);
  server.start();
  const std::string file = (disk / "a.fxr").string();
  ChildProcess recorder(FRINGIX_TOOL, {"record", "127.0.0.1", "--listen", "127.0.0.3", "-o", file, "-n", "4"});
  EXPECT_NE(recorder.waitForLine("recording 127.0.0.1"), "");
  const ScratchFolder scratch;
  const Outcome live = runProgram(FRINGIX_TOOL, "live 127.0.0.3 -o " + inQuotes(scratch / "a.png"));
  EXPECT_EQ(live.exitCode, 0) << live.errors;
  EXPECT_EQ(recorder.waitForLine("caution"), "fringix: caution: the recording has ended: cannot write \"" + file +
                                                 "\": No space left on device. Connections go on without it");
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "live 127.0.0.3 -o " + inQuotes(scratch / "b.png")).exitCode, 0);
  EXPECT_EQ(recorder.wait(), 1);
  const Outcome shown = runProgram(FRINGIX_TOOL, "recording show " + inQuotes(disk / "a.fxr"));
  EXPECT_EQ(shown.exitCode, 0) << shown.errors;
  EXPECT_NE(shown.output.find("41MSG_SLGetLiveImage"), shown.output.npos) << shown.output;
}

}  // namespace
}  // namespace fringix::test
