// The built program with special files: nothing is read or written that has no end.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "../program.h"
#include "../small_head.h"
#include "head/serving/head_server.h"

namespace fringix::test {
namespace {

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

}  // namespace
}  // namespace fringix::test
