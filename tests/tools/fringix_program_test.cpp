// The built program against a head on the loopback.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "head/serving/head_server.h"
#include "png/png_decoder.h"
#include "program.h"
#include "small_head.h"
#include "support/json.h"
#include "support/scripted_head.h"

namespace fringix::test {
namespace {

Outcome fringixTool(const std::string& arguments) { return runProgram(FRINGIX_TOOL, arguments); }

class FringixProgram : public testing::Test {
 protected:
  FringixProgram() { server_.start(); }

  head::HeadServer server_{smallHead()};
};

TEST_F(FringixProgram, InfoIsATable) {
  const Outcome outcome = fringixTool("info 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const std::string beforeTime =
      "head              127.0.0.1\n"
      "serial number     4711\n"
      "protocol version  3300\n"
      "camera            64 x 48 pixels\n"
      "projector         32 x 20 pixels\n"
      "time to open      ";
  ASSERT_EQ(outcome.output.substr(0, beforeTime.size()), beforeTime);
  std::istringstream rest(outcome.output.substr(beforeTime.size()));
  double milliseconds = 0;
  rest >> milliseconds;
  EXPECT_GE(milliseconds, 0);
  EXPECT_EQ(outcome.output.substr(beforeTime.size() + static_cast<std::size_t>(rest.tellg())), " ms\nlibrary version   4002\n");
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(FringixProgram, InfoAsJson) {
  const Outcome outcome = fringixTool("info 127.0.0.1 --json");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Json facts(outcome.output);
  EXPECT_GT(facts.at("/openMilliseconds").number(), 0);
  EXPECT_EQ(facts.without("/openMilliseconds"),
            Json(R"({"address": "127.0.0.1", "serial": 4711, "protocolVersion": 3300, "libraryVersion": 4002,
      "camera": {"width": 64, "height": 48}, "projector": {"width": 32, "height": 20}})"));
}

TEST_F(FringixProgram, LiveWritesThePicture) {
  const ScratchFolder scratch;
  const Outcome outcome = fringixTool("live 127.0.0.1 -o " + inQuotes(scratch / "live.png"));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const DecodedPng png = decodePng(readBytes(scratch / "live.png"));
  EXPECT_EQ(png.width, 64U);
  EXPECT_EQ(png.height, 48U);
  EXPECT_EQ(png.bitDepth, 8U);
  EXPECT_EQ(png.colorType, 0U);
  const auto [darkest, brightest] = std::minmax_element(png.samples.begin(), png.samples.end());
  EXPECT_GT(*darkest, 0) << "the head's pictures have no black pixel";
  EXPECT_GT(*brightest - *darkest, 50) << "a lit scene";
}

TEST_F(FringixProgram, FileNamesMayHaveLettersOfAnyScript) {
  const ScratchFolder scratch;
  const std::string name = "K\u00F6pfe \u2192 \u5F62.png";
  if (!std::ofstream(scratch / name)) GTEST_SKIP() << "the file system does not take such names";
  const Outcome outcome = fringixTool("live 127.0.0.1 -o " + inQuotes(scratch / name));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(decodePng(readBytes(scratch / name)).width, 64U);
}

TEST_F(FringixProgram, LiveNumbersSeveralPicturesAndShowsNoBarInAPipe) {
  const ScratchFolder scratch;
  const Outcome outcome = fringixTool("live 127.0.0.1 --count 3 -o " + inQuotes(scratch / "live.png"));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors, "");
  EXPECT_NE(outcome.output.find("frames/s"), std::string::npos) << outcome.output;
  const auto picture = [&](const char* name) { return decodePng(readBytes(scratch / name)).samples; };
  EXPECT_NE(picture("live-1.png"), picture("live-2.png"));
  EXPECT_NE(picture("live-2.png"), picture("live-3.png"));
}

TEST_F(FringixProgram, LiveTellsAnUnwritableFileWithoutAskingTheHead) {
  server_.stop();
  const ScratchFolder scratch;
  const std::string path = (scratch / "missing" / "live.png").string();
  const Outcome outcome = fringixTool("live 127.0.0.1 -o " + inQuotes(path));
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors, "fringix: cannot write \"" + path + "\": No such file or directory\n");
}

TEST(FringixProgramFailure, NobodyAnswers) {
  const Outcome outcome = fringixTool("info 127.0.0.9");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors,
            "fringix: no head answers at 127.0.0.9:44330 (SLCONNECTION_ERROR, -10)\n"
            "  Check the address and that the head is on. Connecting takes until the operating system gives up.\n");
}

TEST(FringixProgramFailure, SomethingElseListens) {
  ScriptedHead head({stall()});
  const Outcome outcome = fringixTool("info 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("(SLHANDSHAKE_TIMEOUT, -11)\n  Check"), std::string::npos) << outcome.errors;
}

TEST(FringixProgramFailure, NoPictureLeavesNoFile) {
  ScriptedHead head({reply(integer(1)), expect(integer(3300)), expect(text("40MSG_SLGetMaxImageSize")), reply(integers(2, 1, 0)),
                     expect(text("45MSG_SLGetProjDimension")), reply(integers(32, 20, 8)), expect(text("41MSG_SLGetLiveImage")),
                     reply(Bytes("\0\xFF", 2))});
  const ScratchFolder scratch;
  const Outcome outcome = fringixTool("live 127.0.0.1 -o " + inQuotes(scratch / "live.png"));
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("no picture to give (SLSYSTEM_ERROR, -4)\n  Wait"), std::string::npos) << outcome.errors;
  EXPECT_FALSE(std::filesystem::exists(scratch / "live.png"));
}

TEST(FringixProgramUsage, WrongUsageIsTold) {
  for (const char* arguments : {"", "dance", "info", "info head", "info 127.0.0.1 --dance", "live 127.0.0.1 --count 0"}) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    EXPECT_EQ(outcome.output, "") << arguments;
    EXPECT_NE(outcome.errors, "") << arguments;
  }
}

TEST(FringixProgramUsage, UnknownSubcommandIsNamed) {
  EXPECT_EQ(fringixTool("dance 127.0.0.1").errors,
            "fringix: \"dance\" is no subcommand\n"
            "  \"fringix --help\" lists the subcommands, \"fringix SUBCOMMAND --help\" the options of one.\n");
}

TEST(FringixProgramUsage, SubcommandThatIsMistypedIsNamedWithTheOneThatIsNear) {
  const std::string errors = fringixTool("lve 127.0.0.1").errors;
  EXPECT_EQ(errors.substr(0, errors.find('\n')), "fringix: \"lve\" is no subcommand, did you mean \"live\"?");
}

TEST(FringixProgramUsage, NumberThatIsNotAllowedIsNamedWithWhatIs) {
  for (const std::string number : {"0", "abc"}) {
    const std::string errors = fringixTool("live 127.0.0.1 -n " + number).errors;
    EXPECT_EQ(errors.substr(0, errors.find('\n')), "fringix: --count: \"" + number + "\" is no number from 1 to 999999");
  }
}

TEST(FringixProgramUsage, AddressThatIsNoneIsNamed) {
  const Outcome outcome = fringixTool("info head.local");
  EXPECT_NE(outcome.errors.find("\"head.local\" is no IPv4 address such as 192.168.0.10\n"), std::string::npos) << outcome.errors;
}

TEST(FringixProgramUsage, HelpSaysThatConnectingBlocks) {
  for (const char* subcommand : {"info", "live"}) {
    const Outcome outcome = fringixTool(std::string(subcommand) + " --help");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("Connecting blocks until the operating system gives up"), std::string::npos) << outcome.output;
  }
}

TEST(FringixProgramUsage, Version) { EXPECT_EQ(fringixTool("--version").output, "fringix, library version 4002\n"); }

}  // namespace
}  // namespace fringix::test
