// Output that cannot be written, of the built program.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "head/serving/head_server.h"
#include "program.h"
#include "shell.h"
#include "small_head.h"

namespace fringix::test {
namespace {

class FringixOutput : public testing::Test {
 protected:
  FringixOutput() { server_.start(); }

  std::string program(const std::string& arguments) const {
    return inQuotes(std::filesystem::path(FRINGIX_TOOL).make_preferred()) + " " + arguments;
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{smallHead()};
};

TEST_F(FringixOutput, ToAFullDeviceIsAFailure) {
  if (!std::ofstream("/dev/full")) GTEST_SKIP() << "the system has no device that is always full";
  ASSERT_EQ(runShell(program("pattern alloc 127.0.0.1 1") + " > " + inQuotes(scratch_ / "sequence")), 0);
  ASSERT_EQ(runShell(program("pattern gray 127.0.0.1 1 0 0 0 0")), 0);
  const std::string file = inQuotes(scratch_ / "file");
  const std::string picture = inQuotes(scratch_ / "picture.png");
  for (const std::string& arguments :
       {std::string("--help"), std::string("--version"), std::string("list"), std::string("info 127.0.0.1"),
        std::string("status 127.0.0.1 --json"), std::string("get 127.0.0.1 gain"), std::string("gpio read 127.0.0.1 1"),
        std::string("status 127.0.0.1 --watch 10ms"), std::string("pattern alloc 127.0.0.1 1"), "live 127.0.0.1 -o " + picture,
        std::string("measure 127.0.0.1 1"), "picture 127.0.0.1 0 -o " + picture,
        "sheet " + picture + " -o " + inQuotes(scratch_ / "sheet.png"), "data save 127.0.0.1 block " + picture,
        "data load 127.0.0.1 block -o " + file, std::string("ini read 127.0.0.1 Camera Width"), std::string("serial 127.0.0.1 hello"),
        std::string("projector 127.0.0.1 2 0")}) {
    const int exitCode = runShell(program(arguments) + " > /dev/full 2> " + inQuotes(scratch_ / "errors"));
    EXPECT_EQ(exitCode, 1) << arguments;
    EXPECT_NE(readText(scratch_ / "errors").find("the output could not be written"), std::string::npos) << arguments;
  }
}

TEST_F(FringixOutput, ToAReaderThatHasGoneIsAFailure) {
  const std::string code = inQuotes(scratch_ / "code");
  const std::string line = "{ " + program("status 127.0.0.1 --watch 10ms") + " 2> " + inQuotes(scratch_ / "errors") + "; echo $? > " +
                           code + "; } | true; sleep 0.1";
  if (runShell(line) != 0) GTEST_SKIP() << "the command interpreter knows no such groups";
  EXPECT_EQ(readText(scratch_ / "code"), "1\n");
  EXPECT_NE(readText(scratch_ / "errors").find("the output could not be written"), std::string::npos);
}

TEST_F(FringixOutput, ToAClosedStreamIsAFailure) {
  const int exitCode = runShell(program("info 127.0.0.1") + " >&- 2> " + inQuotes(scratch_ / "errors"));
  if (exitCode != 1 && !std::filesystem::exists("/dev/full")) GTEST_SKIP() << "the command interpreter cannot close a stream";
  EXPECT_EQ(exitCode, 1);
  EXPECT_NE(readText(scratch_ / "errors").find("the output could not be written"), std::string::npos);
}

TEST_F(FringixOutput, OfErrorsIsNoReasonToFail) {
  const int exitCode = runShell(program("get 127.0.0.1 gain") + " > " + inQuotes(scratch_ / "output") + " 2>&-");
  EXPECT_EQ(exitCode, 0);
  EXPECT_EQ(readText(scratch_ / "output"), "10\n");
}

}  // namespace
}  // namespace fringix::test
