#include "arguments/describe.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "arguments/parse.h"

namespace fringix::arguments {
namespace {

// A program with what is special: words in quotes, backslashes, lines that begin with a dot, subcommands of subcommands.
class DescribeTest : public testing::Test {
 protected:
  DescribeTest() {
    program.version("1.2");
    program.flag("--trace", &trace, "Show it's calls");
    program.note(".dotted\n  lines");
    Command& pattern = program.subcommand("pattern", "Fill the head");
    Command& upload = pattern.subcommand("upload", "Send \"files\"");
    upload.positional("FILE", &files, "Files").required();
    upload.positional("NAME", &name, "A name");
    upload.option("-o,--output", &name, "Back\\slash").valueName("DIR").showDefault("here");
    upload.note("Names: a-z");
  }

  std::string describedAs(const char* form) {
    const std::vector<const char*> line = {"program", "--describe-as", form};
    testing::internal::CaptureStdout();
    EXPECT_FALSE(parse(program, 3, line.data()));
    return testing::internal::GetCapturedStdout();
  }

  Command program{"some-program", "Does things."};
  bool trace = false;
  std::vector<std::string> files;
  std::string name;
};

void expectLines(const std::string& text, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) EXPECT_NE(("\n" + text).find("\n" + line + "\n"), std::string::npos) << line << "\nin\n" << text;
}

TEST_F(DescribeTest, TheManualHasEveryCommandAndArgument) {
  expectLines(describedAs("man"),
              {".TH \"some-program\" 1 \"\" \"Fringix\" \"User Commands\"", "some\\-program \\- Does things.", "\\fB\\-\\-trace\\fR",
               "Show it's calls", "\\fB\\-\\-version\\fR", ".SS pattern", ".SS pattern upload",
               "\\fBsome\\-program pattern upload\\fR [\\fIOPTIONS\\fR] \\fIFILE...\\fR [\\fINAME\\fR]",
               "\\fB\\-o\\fR, \\fB\\-\\-output\\fR \\fIDIR\\fR", "Back\\eslash (default: here)", "Files (required)", "Names: a\\-z"});
}

TEST_F(DescribeTest, TheManualKeepsLinesAndTakesNoneForARequest) { expectLines(describedAs("man"), {".nf\n\\&.dotted\n  lines\n.fi"}); }

TEST_F(DescribeTest, BashIsOfferedWhatThePlaceKnows) {
  expectLines(describedAs("bash"),
              {"    '') subcommands='pattern' flags='--trace --version -h --help' valued='' ;;",
               "    ' pattern') subcommands='upload' flags='--trace --version -h --help' valued='' ;;",
               "    ' pattern upload') subcommands='' flags='-o --output --trace --version -h --help' valued='-o --output' ;;",
               "complete -o default -F _some_program some-program"});
}

TEST_F(DescribeTest, ZshIsToldWhatTheyMean) {
  const std::string text = describedAs("zsh");
  EXPECT_TRUE(text.starts_with("#compdef some-program\n"));
  expectLines(text, {"  (' pattern') subcommands=( 'upload:Send \"files\"' )",
                     "    flags=( '-o:Back\\slash' '--output:Back\\slash' '--trace:Show it'\\''s calls' '--version:Print the version' "
                     "'-h:Print a help message' '--help:Print a help message' )",
                     "    valued=(-o --output) ;;"});
}

TEST_F(DescribeTest, FishIsToldWhatTheyMean) {
  expectLines(describedAs("fish"),
              {"complete -c some-program -n \"__some_program_at ''\" -f -a pattern -d 'Fill the head'",
               "complete -c some-program -n \"__some_program_at ''\" -l trace -d 'Show it\\'s calls'",
               "complete -c some-program -n \"__some_program_at ' pattern upload'\" -s o -l output -r -d 'Back\\\\slash'"});
}

TEST_F(DescribeTest, AnotherFormIsRefused) {
  const std::vector<const char*> line = {"program", "--describe-as", "novel"};
  try {
    parse(program, 3, line.data());
    FAIL();
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "--describe-as: \"novel\" is none of man, bash, zsh and fish");
  }
}

}  // namespace
}  // namespace fringix::arguments
