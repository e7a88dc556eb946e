// The built program against a head on the loopback.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "head/serving/head_server.h"
#include "png/png_decoder.h"
#include "probed.h"
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

TEST_F(FringixProgram, HostNamesAreLookedUp) {
  for (const char* arguments : {"info localhost --json", "info 127.0.0.1:44330 --json"}) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(Json(outcome.output).at("/address").text(), "127.0.0.1");
  }
}

TEST_F(FringixProgram, FailuresAreJsonWhenTheResultIs) {
  const auto error = [](const char* arguments, int exitCode) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, exitCode) << arguments;
    EXPECT_EQ(outcome.output, "");
    return Json(outcome.errors).at("/error");
  };
  EXPECT_EQ(error("info 127.0.0.9 --json", 1).at("/kind").text(), "refused");
  EXPECT_EQ(error("info 127.0.0.256 --json", 2).at("/kind").text(), "usage");
  EXPECT_EQ(error("data load 127.0.0.1 missing -o out --json", 1).at("/kind").text(), "failure");
  const Json refusal = error("gpio read 127.0.0.1 8 --json", 1);
  EXPECT_EQ(refusal.at("/kind").text(), "SLSYSTEM_ERROR");
  EXPECT_EQ(refusal.at("/status").number(), -4);
  EXPECT_EQ(refusal.at("/what").text(), "the head at 127.0.0.1 has no such line (SLSYSTEM_ERROR, -4)");
  EXPECT_EQ(refusal.at("/next").text(), "Check the line's number.");
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
            "fringix: 127.0.0.9:44330 refuses the connection: no head serves it\n"
            "  Check the address. If it is the head's, wait until the head has started, or switch it off and on again.\n");
}

TEST(FringixProgramFailure, SomethingElseListens) {
  ScriptedHead head({stall()});
  const Outcome outcome = fringixTool("info 127.0.0.1 --timeout 300ms");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors.find("fringix: 127.0.0.1:44330 accepts the connection, but does not greet within 0.3 s\n  Check"), 0U)
      << outcome.errors;
}

TEST(FringixProgramFailure, NoPictureLeavesNoFile) {
  ScriptedHead head(probed(opening() + Script{expect(text("41MSG_SLGetLiveImage")), reply(Bytes("\0\xFF", 2))}));
  const ScratchFolder scratch;
  const Outcome outcome = fringixTool("live 127.0.0.1 -o " + inQuotes(scratch / "live.png"));
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("no picture to give (SLSYSTEM_ERROR, -4)\n  Wait"), std::string::npos) << outcome.errors;
  EXPECT_FALSE(std::filesystem::exists(scratch / "live.png"));
}

TEST(FringixProgramUsage, WrongUsageIsTold) {
  for (const char* arguments : {"", "dance", "info", "info 127.0.0.256", "info 127.0.0.1 --timeout 0s", "info 127.0.0.1 --timeout soon",
                                "info 127.0.0.1 --dance", "live 127.0.0.1 --count 0"}) {
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
  const Outcome outcome = fringixTool("info head+local");
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_NE(outcome.errors.find("\"head+local\" is neither an IPv4 address such as 192.168.0.10 nor a host's name\n"), std::string::npos)
      << outcome.errors;
}

TEST(FringixProgramUsage, AddressWithAnotherPortIsToldWhyNot) {
  const Outcome outcome = fringixTool("info 127.0.0.1:8080");
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_NE(outcome.errors.find("heads are always reached on port 44330"), std::string::npos) << outcome.errors;
}

TEST(FringixProgramUsage, HelpEndsWithItsLastLine) {
  for (const char* subcommand : {"get", "set", "list", "watch"}) {
    const std::string help = fringixTool(std::string(subcommand) + " --help").output;
    EXPECT_TRUE(help.ends_with("\n") && !help.ends_with("\n\n")) << help;
    EXPECT_EQ(help.find("\n\n\n"), std::string::npos) << help;
  }
}

TEST(FringixProgramUsage, HelpNamesTheTimeLimit) {
  for (const char* subcommand : {"info", "live"}) {
    const Outcome outcome = fringixTool(std::string(subcommand) + " --help");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("--timeout"), std::string::npos) << outcome.output;
  }
}

TEST(FringixProgramUsage, Version) { EXPECT_EQ(fringixTool("--version").output, "fringix, library version 4002\n"); }

}  // namespace
}  // namespace fringix::test
