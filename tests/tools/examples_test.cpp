#include <gtest/gtest.h>

#include <filesystem>

#include "head/serving/head_server.h"
#include "program.h"
#include "support/child_process.h"
#include "triggered_line.h"

namespace fringix::test {
namespace {

class Examples : public testing::Test {
 protected:
  Examples() { server_.start(); }

  static head::HeadSettings settings() {
    head::HeadSettings settings;
    settings.serial = 4711;
    return settings;
  }

  head::HeadServer server_{settings()};
};

TEST_F(Examples, LivePictureInC) {
  const Outcome outcome = runProgram(EXAMPLE_IN_C, "");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
  EXPECT_EQ(outcome.output.find("SLALL_OKAY, the pixel in the middle is "), 0U) << outcome.output;
}

TEST_F(Examples, LivePictureInCTellsAFailure) {
  server_.stop();
  const Outcome outcome = runProgram(EXAMPLE_IN_C, "");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "SLCONNECTION_ERROR, the pixel in the middle is 0\n");
}

TEST_F(Examples, LivePictureInCxx) {
  const ScratchFolder scratch;
  const std::filesystem::path before = std::filesystem::current_path();
  const std::filesystem::path program = std::filesystem::absolute(EXAMPLE_IN_CXX);
  std::filesystem::current_path(scratch / "");
  const Outcome outcome = runProgram(program, "");
  std::filesystem::current_path(before);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "head 4711: 1280 x 1024 pixels in live.pgm\n");
  EXPECT_EQ(readBytes(scratch / "live.pgm").size(), std::string("P5 1280 1024 255\n").size() + 1280 * 1024);
}

TEST_F(Examples, WatchTriggersUntilEnter) {
  ChildProcess example(EXAMPLE_OF_TRIGGERS, {});
  EXPECT_EQ(example.nextLine(), "SLALL_OKAY, end with Enter");
  EXPECT_EQ(lineAfterTrigger(example, server_), "trigger of head 4711");
  example.write("\n");
  EXPECT_EQ(example.wait(), 0);
}

TEST_F(Examples, WatchTriggersTellsAFailure) {
  server_.stop();
  const Outcome outcome = runProgram(EXAMPLE_OF_TRIGGERS, "");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "SLCONNECTION_ERROR, end with Enter\n");
}

TEST(ExamplesInReadme, LivePictureInCIsTheSameText) {
  const std::string example = readText(std::filesystem::path(EXAMPLE_FOLDER) / "live_picture.c");
  EXPECT_NE(readText(README).find("```c\n" + example + "```\n"), std::string::npos);
}

}  // namespace
}  // namespace fringix::test
