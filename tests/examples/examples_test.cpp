// The examples in C and C++ as a user runs them, with simulated heads.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "head/serving/head_server.h"
#include "support/child_process.h"
#include "tools/program.h"
#include "tools/triggered_line.h"

namespace fringix::test {
namespace {

constexpr std::chrono::seconds patience{60};

head::HeadSettings settingsAt(const char* address) {
  head::HeadSettings settings;
  settings.address = address;
  settings.serial = 4711;
  settings.camera = {320, 256};
  settings.projector = {640, 400};
  settings.imageTime = std::chrono::milliseconds(0);
  return settings;
}

// With the language that an example is written in as parameter.
class Examples : public testing::TestWithParam<std::string> {
 protected:
  Examples() { server_.start(); }

  static std::filesystem::path program(const std::string& name) {
    return std::filesystem::absolute(std::filesystem::path(EXAMPLE_PROGRAMS) / (name + "_" + GetParam() + EXAMPLE_SUFFIX));
  }

  Outcome run(const std::string& name, const std::string& arguments = "127.0.0.2") const {
    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path started = program(name);
    std::filesystem::current_path(scratch_.path());
    Outcome outcome = runProgram(started, arguments);
    std::filesystem::current_path(before);
    return outcome;
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{settingsAt("127.0.0.2")};
};

std::ptrdiff_t lineCount(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

TEST_P(Examples, FirstPicture) {
  const Outcome outcome = run("first_picture");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  if (GetParam() == "c") {
    EXPECT_EQ(outcome.output.find("SLALL_OKAY, 320 x 256 pixels"), 0U) << outcome.output;
  } else {
    EXPECT_EQ(outcome.output, "head 4711: 320 x 256 pixels in live.pgm\n");
    EXPECT_EQ(readBytes(scratch_ / "live.pgm").size(), std::string("P5 320 256 255\n").size() + 320 * 256);
  }
}

TEST_P(Examples, ScanToCloud) {
  const Outcome outcome = run("scan_to_cloud");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const std::string points = outcome.output.substr(0, outcome.output.find(' '));
  EXPECT_GT(std::stoi(points), 30000);
  const std::string cloud = readText(scratch_ / "cloud.ply");
  EXPECT_NE(cloud.find("element vertex " + points + "\n"), std::string::npos);
  EXPECT_EQ(lineCount(cloud.substr(cloud.find("end_header\n"))), std::stoi(points) + 1);
}

TEST_P(Examples, HdrScan) {
  const Outcome outcome = run("hdr_scan");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_GT(std::stoi(outcome.output), 30000) << outcome.output;
  EXPECT_NE(outcome.output.find(" points of 3 exposures, "), std::string::npos) << outcome.output;
  EXPECT_EQ(server_.model().configuration().exposure(), 20000) << "as it was";
}

TEST_P(Examples, AScanThatFailsLeavesItsHeadInOrder) {
  server_.model().setMeasurementFault(-2);
  for (const std::uint32_t sequence : {1U, 2U}) {
    const Outcome outcome = run(sequence == 1 ? "scan_to_cloud" : "hdr_scan");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "SLStartMeasurement: SLMEASUREMENT_FAILED (-30)\n");
    EXPECT_EQ(server_.model().imageCount(sequence), 0U) << "freed";
  }
  EXPECT_EQ(server_.model().configuration().exposure(), 20000) << "as it was";
  std::uint32_t next = 0;
  EXPECT_EQ(server_.model().allocateSequence(1, next), head::Status::ok);
  EXPECT_EQ(next, 3U) << "each had one";
}

TEST_P(Examples, SeveralHeadsOfWhichOneIsOff) {
  head::HeadServer other(settingsAt("127.0.0.3"));
  other.start();
  const Outcome all = run("several_heads", "127.0.0.2 127.0.0.3");
  EXPECT_EQ(all.exitCode, 0) << all.errors;
  EXPECT_EQ(lineCount(all.output), 2) << all.output;
  const Outcome outcome = run("several_heads", "127.0.0.2 127.0.0.4 127.0.0.3");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.output.find("127.0.0.2: brightness "), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("127.0.0.3: brightness "), std::string::npos) << outcome.output;
  EXPECT_EQ(outcome.errors.find("127.0.0.4: "), 0U) << outcome.errors;
}

TEST_P(Examples, WatchTriggersUntilEnter) {
  ChildProcess example(program("watch_triggers"), {"127.0.0.2"});
  EXPECT_NE(example.waitForLine("end with Enter", patience), "");
  EXPECT_EQ(lineAfterTrigger(example, server_), "trigger of head 4711");
  example.write("\n");
  EXPECT_EQ(example.wait(patience), 0);
}

TEST_P(Examples, StationGoesOnWhenItsHeadIsBack) {
  ChildProcess example(program("station"), {"127.0.0.2"});
  EXPECT_NE(example.waitForLine("connected", patience), "");
  example.write("part-1\n");
  EXPECT_NE(example.waitForLine("part-1: level ", patience), "");
  server_.stop();
  example.write("part-2\n");
  EXPECT_NE(example.waitForLine("connecting again", patience), "");
  server_.start();
  EXPECT_NE(example.waitForLine("part-2: level ", patience), "");
  example.closeInput();
  EXPECT_EQ(example.wait(patience), 0);
}

TEST_P(Examples, OwnCodeTest) {
  const Outcome outcome = run("own_code_test");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
  EXPECT_EQ(lineCount(outcome.output), 3) << outcome.output;
}

TEST_P(Examples, FailuresAreTold) {
  server_.stop();
  for (const char* example : {"first_picture", "scan_to_cloud", "hdr_scan", "several_heads", "watch_triggers", "own_code_test"}) {
    const Outcome outcome = run(example);
    EXPECT_EQ(outcome.exitCode, 1) << example;
    EXPECT_NE((outcome.output + outcome.errors).find("SLCONNECTION_ERROR"), std::string::npos) << example;
  }
}

std::string languageOf(const testing::TestParamInfo<std::string>& info) { return info.param; }

INSTANTIATE_TEST_SUITE_P(InBothLanguages, Examples, testing::Values("c", "cpp"), languageOf);

// A line for each file, and a file for each link.
TEST(ExamplesInReadme, EveryExampleIsInTheTable) {
  const std::filesystem::path folder = EXAMPLE_FOLDER;
  const std::string table = readText(folder / "README.md");
  for (const char* language : {"c", "cpp", "csharp", "matlab", "labview"}) {
    for (const std::string& name : namesIn(folder / language))
      EXPECT_NE(table.find("(" + std::string(language) + "/" + name + ")"), std::string::npos) << language << "/" << name;
  }
  for (std::size_t link = table.find("]("); link != std::string::npos; link = table.find("](", link + 1)) {
    const std::string target = table.substr(link + 2, table.find(')', link) - link - 2);
    EXPECT_TRUE(std::filesystem::exists(folder / target)) << target;
  }
}

}  // namespace
}  // namespace fringix::test
