#include "console/call_trace.h"

#include <gtest/gtest.h>

#include <fringix/fringix.hpp>

#include "head/serving/head_server.h"
#include "program.h"
#include "small_head.h"
#include "support/pattern.h"

namespace fringix::tool {
namespace {

const std::chrono::system_clock::time_point time{std::chrono::milliseconds(1795264215007)};

TEST(CallTrace, HasTheTimeBeforeACall) {
  EXPECT_TRUE(test::matches(formatCallBegin(time, "SLGetGain"), "\\d\\d:\\d\\d:15\\.007 SLGetGain")) << formatCallBegin(time, "SLGetGain");
}

TEST(CallTrace, HasStatusAndDurationAfterIt) {
  const std::string line = formatCallEnd(time, "SLGetGain", SLVERSION_TOO_OLD, std::chrono::microseconds(1260));
  EXPECT_TRUE(test::matches(line, "\\d\\d:\\d\\d:15\\.007 SLGetGain: SLVERSION_TOO_OLD \\(-40\\) after 1\\.3 ms")) << line;
}

TEST(CallTrace, NamesEveryStatusAsTheLibraryDoes) {
  for (const std::int32_t status :
       {SLALL_OKAY, SLUNKNOWN_DEVICE_ID, SLBAD_PARAMETER, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLHANDSHAKE_TIMEOUT, SLUNKNOWN_SEQUENCE_ID,
        SLMEASUREMENT_FAILED, SLVERSION_MISMATCH, SLVERSION_TOO_OLD}) {
    const std::string line = formatCallEnd(time, "call", status, {});
    EXPECT_NE(line.find(std::string("call: ") + statusName(status) + " ("), std::string::npos) << line;
  }
}

TEST(CallTrace, StandsAroundEveryCall) {
  head::HeadServer server(test::smallHead());
  server.start();
  const test::Outcome outcome = test::runProgram(FRINGIX_TOOL, "get 127.0.0.1 gain --trace");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.errors.find("SLErrorcodeToChar"), std::string::npos) << "a call that nobody wanted";
  for (const char* call : {"SLDevAlloc", "SLGetGain", "SLDevFree"}) {
    const std::string before = std::string("\n\\d\\d:\\d\\d:\\d\\d\\.\\d{3} ") + call + "\n";
    const std::string after = std::string("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} ") + call + ": SLALL_OKAY \\(0\\) after \\d+\\.\\d ms\n";
    EXPECT_TRUE(test::contains("\n" + outcome.errors, before + "[\\s\\S]*" + after)) << call << outcome.errors;
  }
}

}  // namespace
}  // namespace fringix::tool
