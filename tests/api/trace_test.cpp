// Trace lines: what they look like, when they come, and what every export writes.
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <functional>

#include "api/export_call.h"
#include "device/camera_device.h"
#include "device/open_session.h"
#include "diagnosis/trace.h"
#include "fringix/fringix.h"
#include "platform/debug_output.h"
#include "support/announcing_head.h"
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

// When a thread of the session writes its first line is up to the system.
Lines withoutThreadStarts(Lines lines) {
  std::erase_if(lines, [](const std::string& text) { return text.find("ThreadProc started") != std::string::npos; });
  return lines;
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
  void (*call)();
  std::string parameters;  // as the entry line shows them; empty: this export has no entry line
};

class ExportTraceTest : public testing::TestWithParam<ExportLines> {};

// With an unknown handle, so that the lines of the session do not come between.
TEST_P(ExportTraceTest, WritesEntryAndExit) {
  Lines expected;
  const auto& [name, call, parameters] = GetParam();
  if (!parameters.empty()) expected.push_back(line(name + (", Parameter: " + parameters)));
  expected.push_back(line("Function " + std::string(name) + " finished"));
  EXPECT_EQ(traced(call), expected);
}

// As the system prints it, whatever the compiler's own library does.
std::string printed(const char* format, ...) {
  char text[32] = {};
  std::va_list arguments;
  va_start(arguments, format);
  platform::formatBounded(text, sizeof text - 1, format, arguments);
  va_end(arguments);
  return text;
}

std::string pointerText(const void* pointer = nullptr) { return printed("%p", pointer); }

const std::string null = pointerText();
constexpr int no = 99;  // a handle that names no session

INSTANTIATE_TEST_SUITE_P(
    Exports, ExportTraceTest,
    testing::ValuesIn(std::vector<ExportLines>{
        ExportLines{"SLDevAlloc", [] { SLDevAlloc("127.0.0.9", nullptr); }, ""},  // no entry line, on purpose
        ExportLines{"SLDevFree", [] { SLDevFree(no); }, "99"},
        ExportLines{"SLGetDevKey", [] { SLGetDevKey(no, nullptr); }, "99, " + null},
        ExportLines{"SLErrorcodeToChar", [] { SLErrorcodeToChar(-4); }, "-4, 0"},  // a place too many, on purpose
        ExportLines{"SLSeqAlloc", [] { SLSeqAlloc(no, 3, nullptr); }, "99, 3, " + null},
        ExportLines{"SLSeqFree", [] { SLSeqFree(no, 7); }, "99, 7"},
        ExportLines{"SLSeqPut", [] { SLSeqPut(no, 7, nullptr, 2, 3, 6, 255); }, "99, " + null + ", 2, 3, 6, 255"},  // without the id
        ExportLines{"SLSeqMakeGrayCode", [] { SLSeqMakeGrayCode(no, 7, 1, 2, 3, 255); }, "99, 7, 1, 2 3, 255"},     // a comma missing
        ExportLines{"SLSeqMakePhase", [] { SLSeqMakePhase(no, 7, 1, 2, 3, 255); }, "99, 7, 1, 2, 3, 255"},
        ExportLines{"SLSeqMakeFromLine8", [] { SLSeqMakeFromLine8(no, 7, 8, nullptr, 9); }, "99, 7, 8, " + null + ", 9"},
        ExportLines{"SLSeqMakeFromCol8", [] { SLSeqMakeFromCol8(no, 7, 8, nullptr, 9); }, "99, 7, 8, " + null + ", 9"},
        ExportLines{"SLSeqMakeFromLine24", [] { SLSeqMakeFromLine24(no, 7, 8, nullptr, 9); }, "99, 7, 8, " + null + ", 9"},
        ExportLines{"SLSeqMakeFromCol24", [] { SLSeqMakeFromCol24(no, 7, 8, nullptr, 9); }, "99, 7, 8, " + null + ", 9"},
        ExportLines{"SLSeqMakeImage", [] { SLSeqMakeImage(no, 7, 1, 2, 3, 4); }, "99, 7, 1, 2, 3"},  // without g4
        ExportLines{"SLShowImage", [] { SLShowImage(no, nullptr, 1, 2, 3); }, "99, " + null + ", 1, 2, 3"},
        ExportLines{"SLShowImageFromSeq", [] { SLShowImageFromSeq(no, 7, 3); }, "99, 7, 3"},
        ExportLines{"SLStartMeasurement", [] { SLStartMeasurement(no, 7); }, "99, 7"},
        ExportLines{"SLStartFromTo", [] { SLStartFromTo(no, 7, 2, 5); }, "99, 2, 5"},  // without the id
        ExportLines{"SLRegisterGPIOCallback", [] { SLRegisterGPIOCallback(no, nullptr); }, "99, " + null},
        ExportLines{"SLRegisterGPIOHandle", [] { SLRegisterGPIOHandle(no, nullptr, -1); }, "99, " + null + ", -1"},
        ExportLines{"SLGetCameraSize", [] { SLGetCameraSize(no, nullptr, nullptr); }, "99, " + null + ", " + null},
        ExportLines{"SLGetProjectorSize", [] { SLGetProjectorSize(no, nullptr, nullptr); }, "99, " + null + ", " + null},
        ExportLines{"SLGetNumberOfChannels", [] { SLGetNumberOfChannels(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetLiveImage", [] { SLGetLiveImage(no, nullptr, 640, 480); }, "99, 0, 640, 480"},  // the buffer as a number
        ExportLines{"SLGetLiveImageEx", [] { SLGetLiveImageEx(no, 1, nullptr, 640, 480); }, "99, 1, 0, 640, 480"},  // here, too
        ExportLines{"SLGetLiveImageROI", [] { SLGetLiveImageROI(no, nullptr, 1, 2, 3, 4); }, "99, " + null + ", 1, 2, 3, 4"},
        ExportLines{"SLGetLiveImageROIEx", [] { SLGetLiveImageROIEx(no, 5, nullptr, 1, 2, 3, 4); }, "99, 5, " + null + ", 1, 2, 3, 4"},
        ExportLines{"SLGetLiveImageROILowRes", [] { SLGetLiveImageROILowRes(no, 5, nullptr, 1, 2, 3, 4, 6); },
                    "99, 5, " + null + ", 1, 2, 3, 4"},  // without the factor
        ExportLines{"SLGetLiveImageLowRes", [] { SLGetLiveImageLowRes(no, 5, nullptr, 6); }, "99, 5, " + null + ", 6"},
        ExportLines{"SLGetImageIndex", [] { SLGetImageIndex(no, 200, nullptr); }, "99, 200, " + null},
        ExportLines{"SLGetImageIndexEx", [] { SLGetImageIndexEx(no, 5, 200, nullptr); }, "99, 5, 200, " + null},
        ExportLines{"SLCheckSystem", [] { SLCheckSystem(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetTemperature", [] { SLGetTemperature(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetLEDPower", [] { SLGetLEDPower(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetBrightnessLevel", [] { SLGetBrightnessLevel(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetGain", [] { SLGetGain(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetCurrentExposure", [] { SLGetCurrentExposure(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetUptime", [] { SLGetUptime(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetProjectorTemperature", [] { SLGetProjectorTemperature(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetProjectorStatus", [] { SLGetProjectorStatus(no, nullptr); }, "99, " + null},
        ExportLines{"SLGetLEDPowerMinMax", [] { SLGetLEDPowerMinMax(no, nullptr, nullptr); }, "99, " + null + ", " + null},
        ExportLines{"SLGetDeviceKeyListEntry", [] { SLGetDeviceKeyListEntry(0, nullptr); }, "0, " + null},
        ExportLines{"SLGetDeviceKeyListEntryEx", [] { SLGetDeviceKeyListEntryEx(-1, nullptr); }, "-1, " + null},
        ExportLines{"SLShowDeviceDialog", [] { SLShowDeviceDialog(nullptr, nullptr); }, null + ", " + null},
        ExportLines{"SLGetBrightnessMinMax", [] { SLGetBrightnessMinMax(no, nullptr, nullptr); }, "99, " + null + ", " + null},
        ExportLines{"SLGetGainMinMax", [] { SLGetGainMinMax(no, nullptr, nullptr); }, "99, " + null + ", " + null},
        ExportLines{"SLSetLEDPower", [] { SLSetLEDPower(no, -5); }, "99, -5"},
        ExportLines{"SLSetBrightnessLevel", [] { SLSetBrightnessLevel(no, -5); }, "99, -5"},
        ExportLines{"SLSetGain", [] { SLSetGain(no, -5); }, "99, -5"},
        ExportLines{"SLSetDMDState", [] { SLSetDMDState(no, -5); }, "99, -5"},
        ExportLines{"SLSetMask", [] { SLSetMask(no, nullptr, 1, 2, 3); }, "99 " + null + " 1 2 3"},  // no commas
        ExportLines{"SLClearMask", [] { SLClearMask(no); }, "99"},
        ExportLines{"SLSetLedPowerValue", [] { SLSetLedPowerValue(no, 255); }, "255"},  // the value, not the handle
        ExportLines{"SLSaveData", [] { SLSaveData(no, nullptr, 4, "a.bin"); }, "99, " + null + ", 4, a.bin"},
        ExportLines{"SLLoadData", [] { SLLoadData(no, nullptr, nullptr, "a.bin"); }, "99, " + null + ", " + null + ", a.bin"},
        ExportLines{"SLFreeData", [] { SLFreeData(nullptr); }, null},
        ExportLines{"SLReadIniInt", [] { SLReadIniInt(no, nullptr, "s", nullptr); }, "99, " + null + ", s, (null)"},
        ExportLines{"SLWriteIniInt", [] { SLWriteIniInt(no, 0, "s", "k"); }, "99, " + null + ", s, k"},  // the value as a pointer
        ExportLines{"SLExecRS232", [] { SLExecRS232(no, "go", nullptr, 0); }, "99, go"},
        ExportLines{"SLExecProjCmd", [] { SLExecProjCmd(no, 255, 2, nullptr, nullptr, nullptr); },
                    "255 2 " + null + " " + null + " " + null},  // without the handle
        ExportLines{"SLGetGPIOStatus", [] { SLGetGPIOStatus(no, 3, nullptr); }, "99, 3, " + null},
        ExportLines{"SLSetGPIOValue", [] { SLSetGPIOValue(no, 3, -1); }, "99, 3, -1"},
        ExportLines{"SLGetImageIndexROI", [] { SLGetImageIndexROI(no, 200, nullptr, 1, 2, 3, 4); }, "99, " + null + ", 1, 2, 3, 4"},
        ExportLines{"SLGetImageIndexROIEx", [] { SLGetImageIndexROIEx(no, 5, 200, nullptr, 1, 2, 3, 4); },
                    "99, 5, " + null + ", 1, 2, 3, 4"}}),  // both without the image index
    [](const auto& test) { return test.param.name; });

TEST(TraceTest, AWrittenValueIsShownAsAPointer) {
  for (const auto& [value, address] : {std::pair{1234, std::uintptr_t{1234}}, std::pair{-12, std::uintptr_t{0xFFFFFFF4}}}) {
    EXPECT_EQ(traced([value = value] { SLWriteIniInt(no, value, "s", "k"); }),
              (Lines{line("SLWriteIniInt, Parameter: 99, " + pointerText(reinterpret_cast<void*>(address)) + ", s, k"),
                     line("Function SLWriteIniInt finished")}));
  }
}

TEST(TraceTest, TheVersionTracesItsNameAlone) {
  EXPECT_EQ(traced([] { QORFringixVersion(); }), (Lines{line("QORFringixVersion"), line("Function QORFringixVersion finished")}));
}

// No exit line, and no comma after the handle; kept on purpose.
TEST(TraceTest, ChangingTheEventHandlersTracesTheEntryAlone) {
  const auto handler = reinterpret_cast<SLEventHandler>(std::uintptr_t{0x1230});  // of no session: never called
  void* const context = reinterpret_cast<void*>(std::uintptr_t{0x4560});
  const std::string parameters = ", Parameter: 99 " + pointerText(printedAsPointer(handler)) + ", " + pointerText(context);
  EXPECT_EQ(traced([&] { EXPECT_EQ(SLRegisterEventhandler(no, handler, context), SLUNKNOWN_DEVICE_ID); }),
            Lines{line("SLRegisterEventhandler" + parameters)});
  EXPECT_EQ(traced([&] { EXPECT_EQ(SLUnregisterEventhandler(no, handler, context), SLUNKNOWN_DEVICE_ID); }),
            Lines{line("SLUnregisterEventhandler" + parameters)});
}

TEST(TraceTest, ChangingTheEventHandlersOfASessionTracesTheEntryAlone) {
  OpenSession session(Script{});
  const std::string parameters = ", Parameter: " + std::to_string(session.handle()) + " " + null + ", " + null;
  EXPECT_EQ(withoutThreadStarts(traced([&] { SLRegisterEventhandler(session.handle(), nullptr, nullptr); })),
            Lines{line("SLRegisterEventhandler" + parameters)});
  EXPECT_EQ(withoutThreadStarts(traced([&] { SLUnregisterEventhandler(session.handle(), nullptr, nullptr); })),
            Lines{line("SLUnregisterEventhandler" + parameters)});
}

TEST(TraceTest, RegisteringForTriggersOfNoSessionIsRefused) {
  EXPECT_EQ(SLRegisterGPIOCallback(no, nullptr), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(SLRegisterGPIOHandle(no, nullptr, 0x8001), SLUNKNOWN_DEVICE_ID);
}

TEST(TraceTest, APointerPrintedAsANumberShowsItsLowHalf) {
  EXPECT_EQ(printedAsInteger(reinterpret_cast<const void*>(std::uintptr_t{0x123456789ABCDEF0})), static_cast<std::int32_t>(0x9ABCDEF0U));
}

TEST(DiscoveryTraceTest, AScanTellsHowManyHeadsItFound) {
  const AnnouncingHead head({{announcement(1)}, {announcement(2)}});
  EXPECT_EQ(traced([] { SLGetDeviceKeyListSize(nullptr); }),
            (Lines{line("SLGetDeviceKeyListSize, Parameter: " + null), line("DeviceEnumerator: Scan for Devices"),
                   line("DeviceEnumerator: 2 Device(s) found"), line("Function SLGetDeviceKeyListSize finished")}));
}

// Lines without the pointer that ends some of them.
Lines withoutPointers(Lines lines) {
  for (std::string& text : lines) {
    if (text.find(", Parameter: ") != std::string::npos) text.erase(text.rfind(' '));
  }
  return lines;
}

TEST(DiscoveryTraceTest, OnlyAnEntryThatIsHandedOutIsTraced) {
  const AnnouncingHead head({{announcement(1)}});
  SLGetDeviceKeyListSize(nullptr);
  DeviceKeyEntry key{};
  EXPECT_EQ(withoutPointers(traced([&] { SLGetDeviceKeyListEntry(0, &key); })),
            (Lines{"<QOR> SLGetDeviceKeyListEntry, Parameter: 0,", line("DeviceEnumerator: returning entry 0"),
                   line("Function SLGetDeviceKeyListEntry finished")}));
  EXPECT_EQ(traced([] { SLGetDeviceKeyListEntry(0, nullptr); }),
            (Lines{line("SLGetDeviceKeyListEntry, Parameter: 0, " + null), line("Function SLGetDeviceKeyListEntry finished")}));
  EXPECT_EQ(withoutPointers(traced([&] { SLGetDeviceKeyListEntry(1, &key); })),
            (Lines{"<QOR> SLGetDeviceKeyListEntry, Parameter: 1,", line("Function SLGetDeviceKeyListEntry finished")}));
}

TEST(DiscoveryTraceTest, AnExtendedEntryThatIsHandedOutIsTracedAlike) {
  const AnnouncingHead head({{announcement(1)}, {announcement(2)}});
  SLGetDeviceKeyListSize(nullptr);
  DeviceKeyEntryEx entry{};
  EXPECT_EQ(withoutPointers(traced([&] { SLGetDeviceKeyListEntryEx(1, &entry); })),
            (Lines{"<QOR> SLGetDeviceKeyListEntryEx, Parameter: 1,", line("DeviceEnumerator: returning entry 1"),
                   line("Function SLGetDeviceKeyListEntryEx finished")}));
  EXPECT_EQ(withoutPointers(traced([&] { SLGetDeviceKeyListEntryEx(2, &entry); })),
            (Lines{"<QOR> SLGetDeviceKeyListEntryEx, Parameter: 2,", line("Function SLGetDeviceKeyListEntryEx finished")}));
}

TEST(DiscoveryTraceTest, OpeningBySerialTracesOnlyWhatItCalls) {
  const AnnouncingHead head({{announcement(1)}, {announcement(2)}});
  int handle = 0;
  EXPECT_EQ(withoutPointers(traced([&] { SLDevAllocBySerial(2, &handle); })),
            (Lines{"<QOR> SLGetDeviceKeyListSize, Parameter:", line("DeviceEnumerator: Scan for Devices"),
                   line("DeviceEnumerator: 2 Device(s) found"), line("Function SLGetDeviceKeyListSize finished"),
                   "<QOR> SLGetDeviceKeyListEntry, Parameter: 0,", line("DeviceEnumerator: returning entry 0"),
                   line("Function SLGetDeviceKeyListEntry finished"), "<QOR> SLGetDeviceKeyListEntry, Parameter: 1,",
                   line("DeviceEnumerator: returning entry 1"), line("Function SLGetDeviceKeyListEntry finished"),
                   line("Function SLDevAlloc finished")}));
}

TEST(SessionTraceTest, OpeningAndClosing) {
  ScriptedHead head(handshake());
  int handle = -1;
  EXPECT_EQ(withoutThreadStarts(traced([&] { SLDevAlloc("127.0.0.1", &handle); })),
            (Lines{line("Cameradevice: Init"), line("Cameradevice: Start Heartbeatthread"), line("Cameradevice: Start GPIOthread"),
                   line("Function SLDevAlloc finished")}));
  EXPECT_EQ(withoutThreadStarts(traced([&] { SLDevFree(handle); })),
            (Lines{line("SLDevFree, Parameter: " + std::to_string(handle)), line("Cameradevice: Closing"),
                   line("HeartbeatThread: returning from ThreadProc"), line("GPIOThread: returning from ThreadProc"),
                   line("Cameradevice: closed"), line("Function SLDevFree finished")}));
}

TEST(SessionTraceTest, AFailedOpeningWritesItsExitLine) {
  int handle = 0;
  EXPECT_EQ(traced([&] { SLDevAlloc("127.0.0.9", &handle); }), Lines{line("Function SLDevAlloc finished")});
}

// The lines of an opening that fails because the head does this.
Lines tracedFailure(const Script& script) {
  ScriptedHead head(script);
  int handle = 0;
  return withoutThreadStarts(traced([&] { EXPECT_NE(SLDevAlloc("127.0.0.1", &handle), SLALL_OKAY); }));
}

TEST(SessionTraceTest, AGreetingThatFails) {
  EXPECT_EQ(tracedFailure({cut()}), (Lines{line("Cameradevice: Init"), line("Cameradevice: Closing"), line("Cameradevice: closed"),
                                           line("Function SLDevAlloc finished")}));
}

// Of a handshake that fails when the threads run already.
Lines failedHandshake(const std::string& end) {
  return {line("Cameradevice: Init"),
          line("Cameradevice: Start Heartbeatthread"),
          line("Cameradevice: Start GPIOthread"),
          line("Cameradevice: Closing"),
          line("HeartbeatThread: returning from ThreadProc"),
          line("GPIOThread: returning from ThreadProc"),
          line(end),
          line("Function SLDevAlloc finished")};
}

TEST(SessionTraceTest, AHandshakeThatBreaksOff) {
  EXPECT_EQ(tracedFailure({reply(integer(1)), expect(integer(3300)), expect(text("40MSG_SLGetMaxImageSize")), cut()}),
            failedHandshake("Cameradevice: closed on error"));
}

TEST(SessionTraceTest, AHandshakeThatTheHeadRefuses) {
  EXPECT_EQ(tracedFailure({reply(integer(1)), expect(integer(3300)), expect(text("40MSG_SLGetMaxImageSize")), reply(integers(8, 4, 1))}),
            failedHandshake("Cameradevice: closed"));
}

TEST(SessionTraceTest, ASessionWithoutAChannel) {
  CameraDevice device;
  EXPECT_EQ(traced([&] { device.Init(nullptr); }), (Lines{line("Cameradevice: Init"), line("Cameradevice: Cannot init, no device given")}));
}

TEST(SessionTraceTest, ABrokenConnection) {
  OpenSession session({cut()});
  EXPECT_EQ(withoutThreadStarts(traced([&] { session.device().GetSerial(nullptr); })),
            (Lines{line("Cameradevice: Closing"), line("HeartbeatThread: returning from ThreadProc"),
                   line("GPIOThread: returning from ThreadProc"), line("Cameradevice: closed on error")}));
}

}  // namespace

}  // namespace fringix::test
