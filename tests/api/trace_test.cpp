// Trace lines: what they look like, when they come, and what every export writes.
#include <gtest/gtest.h>

#include <functional>

#include "api/export_call.h"
#include "api/trace.h"
#include "device/open_session.h"
#include "fringix/fringix.h"
#include "support/captured_trace.h"

namespace fringix::test {

namespace {

using Lines = std::vector<std::string>;

std::string line(const std::string& message) { return "<QOR> " + message + "\r\n"; }

// The lines that `action` causes with the debug flag set.
Lines traced(const std::function<void()>& action) {
  CapturedTrace capture;
  setDebugFlag(1);
  action();
  setDebugFlag(0);
  return capture.lines();
}

TEST(TraceTest, IsSilentWithoutTheFlag) {
  CapturedTrace capture;
  trace("hello");
  QORFringixVersion();
  SLSetDebugFlag(0);
  EXPECT_EQ(capture.lines(), Lines{});
}

TEST(TraceTest, StripsTrailingSpace) {
  EXPECT_EQ(traced([] { trace("a %s\n", "b \t\r\n "); }), Lines{line("a b")});
  EXPECT_EQ(traced([] { trace(" \n "); }), Lines{line("")});
}

TEST(TraceTest, CutsLongMessages) {
  const std::string longest(4093, 'x');
  EXPECT_EQ(traced([&] { trace("%s", longest.c_str()); }), Lines{line(longest)});
  EXPECT_EQ(traced([&] { trace("%s", (longest + "yz").c_str()); }), Lines{line(longest)});
}

TEST(TraceTest, SettingTheFlagSaysSoAndBearsItsName) {
  EXPECT_EQ(traced([] { EXPECT_EQ(SLSetDebugFlag(-5), SLALL_OKAY); }),
            (Lines{line("Debug Enabled."), line("Function SLSetDebugFlag finished")}));
}

TEST(TraceTest, ACallBegunInSilenceEndsWithoutItsName) {
  EXPECT_EQ(traced([] {
              setDebugFlag(0);
              ExportCall call("SLGetGain", "%s, Parameter: %i", 1);
              setDebugFlag(1);
            }),
            Lines{line("Function  finished")});
}

struct ExportLines {
  const char* name;
  std::function<void()> call;
  const char* entry;  // null: this export has no entry line
};

class ExportTraceTest : public testing::TestWithParam<ExportLines> {};

// With an unknown handle, so that the lines of the session do not come between.
TEST_P(ExportTraceTest, WritesEntryAndExit) {
  Lines expected;
  if (GetParam().entry != nullptr) expected.push_back(line(GetParam().entry));
  expected.push_back(line(std::string("Function ") + GetParam().name + " finished"));
  EXPECT_EQ(traced(GetParam().call), expected);
}

// A pointer as "%p" prints it here.
std::string pointerText(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

const std::string null = pointerText(nullptr);
const std::string sizeEntry = ", Parameter: 99, " + null + ", " + null;
const std::string cameraSizeEntry = "SLGetCameraSize" + sizeEntry;
const std::string projectorSizeEntry = "SLGetProjectorSize" + sizeEntry;
const std::string devKeyEntry = "SLGetDevKey, Parameter: 99, " + null;

INSTANTIATE_TEST_SUITE_P(
    Exports, ExportTraceTest,
    testing::Values(ExportLines{"SLDevAlloc", [] { SLDevAlloc("127.0.0.9", nullptr); }, nullptr},  // no entry line, on purpose
                    ExportLines{"SLDevFree", [] { SLDevFree(99); }, "SLDevFree, Parameter: 99"},
                    ExportLines{"SLGetDevKey", [] { SLGetDevKey(99, nullptr); }, devKeyEntry.c_str()},
                    ExportLines{"SLErrorcodeToChar", [] { SLErrorcodeToChar(-4); },
                                "SLErrorcodeToChar, Parameter: -4, 0"},  // a place too many, on purpose
                    ExportLines{"QORFringixVersion", [] { QORFringixVersion(); }, "QORFringixVersion"},
                    ExportLines{"SLGetCameraSize", [] { SLGetCameraSize(99, nullptr, nullptr); }, cameraSizeEntry.c_str()},
                    ExportLines{"SLGetProjectorSize", [] { SLGetProjectorSize(99, nullptr, nullptr); }, projectorSizeEntry.c_str()},
                    // The buffer is printed as a number, on purpose.
                    ExportLines{"SLGetLiveImage", [] { SLGetLiveImage(99, nullptr, 640, 480); },
                                "SLGetLiveImage, Parameter: 99, 0, 640, 480"}),
    [](const auto& test) { return test.param.name; });

TEST(SessionTraceTest, OpeningAndClosing) {
  ScriptedHead head(handshake());
  int handle = -1;
  EXPECT_EQ(traced([&] { SLDevAlloc("127.0.0.1", &handle); }), (Lines{line("Cameradevice: Init"), line("Function SLDevAlloc finished")}));
  EXPECT_EQ(traced([&] { SLDevFree(handle); }),
            (Lines{line("SLDevFree, Parameter: " + std::to_string(handle)), line("Cameradevice: Closing"), line("Cameradevice: closed"),
                   line("Function SLDevFree finished")}));
}

TEST(SessionTraceTest, AFailedOpeningWritesItsExitLine) {
  int handle = 0;
  EXPECT_EQ(traced([&] { SLDevAlloc("127.0.0.9", &handle); }), Lines{line("Function SLDevAlloc finished")});
}

TEST(SessionTraceTest, ABrokenConnection) {
  OpenSession session({cut()});
  EXPECT_EQ(traced([&] { session.device().GetSerial(nullptr); }),
            (Lines{line("Cameradevice: Closing"), line("Cameradevice: closed on error")}));
}

}  // namespace

}  // namespace fringix::test
