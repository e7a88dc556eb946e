// Opening and closing a session, and every way in which the handshake can fail.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "device/camera_device.h"
#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr const char* headAddress = "127.0.0.1";

const Bytes farewell = text("ByeBye=");

// What the head says during a handshake, in order: greeting, camera size and status, projector size.
const Bytes headSide = integer(1) + integers(8, 4, 0) + integers(6, 5, 0);

int open(int* handle) { return SLDevAlloc(headAddress, handle); }

class HandshakeTest : public testing::Test {
 protected:
  int handle_ = 77;
};

TEST_F(HandshakeTest, SendsVersionSizeRequestsAndFarewell) {
  ScriptedHead head(handshake());
  ASSERT_EQ(open(&handle_), SLALL_OKAY);
  EXPECT_EQ(SLDevFree(handle_), SLALL_OKAY);
  EXPECT_EQ(readable(head.received()), readable(handshakeBytes() + farewell));
}

TEST_F(HandshakeTest, TakesAHeadThatSpeaksByteByByte) {
  ScriptedHead head({dribble(integer(-5)), expect(integer(3300)), expect(text("40MSG_SLGetMaxImageSize")), dribble(integers(1280, 1024, 0)),
                     expect(text("45MSG_SLGetProjDimension")), dribble(integers(912, 1140, 99))});
  ASSERT_EQ(open(&handle_), SLALL_OKAY);
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  EXPECT_EQ(SLGetCameraSize(handle_, &width, &height), SLALL_OKAY);
  EXPECT_EQ(width, 1280U);
  EXPECT_EQ(height, 1024U);
  EXPECT_EQ(SLGetProjectorSize(handle_, &width, &height), SLALL_OKAY);
  EXPECT_EQ(width, 912U);
  EXPECT_EQ(height, 1140U);
  EXPECT_EQ(SLGetCameraSize(handle_, nullptr, &height), SLALL_OKAY);
  EXPECT_EQ(height, 1024U);
  EXPECT_EQ(SLGetCameraSize(handle_, nullptr, nullptr), SLALL_OKAY);
  EXPECT_EQ(SLDevFree(handle_), SLALL_OKAY);
}

TEST_F(HandshakeTest, TimesOutAfterTwoSecondsOfSilenceAndStillSaysFarewell) {
  ScriptedHead head({stall()});
  const auto start = Clock::now();
  EXPECT_EQ(open(&handle_), SLHANDSHAKE_TIMEOUT);
  const auto took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(1990));
  EXPECT_LT(took, std::chrono::seconds(10));
  EXPECT_EQ(handle_, -1);
  EXPECT_EQ(readable(head.received()), readable(farewell));
}

TEST_F(HandshakeTest, FailsWhereNothingListens) {
  EXPECT_EQ(SLDevAlloc("127.0.0.9", &handle_), SLCONNECTION_ERROR);
  EXPECT_EQ(handle_, -1);
}

TEST_F(HandshakeTest, FailsForTextsThatAreNoAddress) {
  EXPECT_EQ(SLDevAlloc("not an address", &handle_), SLCONNECTION_ERROR);
  EXPECT_EQ(SLDevAlloc("", &handle_), SLCONNECTION_ERROR);
}

TEST_F(HandshakeTest, FailsWhenTheHeadIsCutAtAnyByte) {
  for (std::size_t offset = 0; offset < headSide.size(); ++offset) {
    for (const Step& end : {cut(), reset()}) {
      SCOPED_TRACE(offset);
      ScriptedHead head({reply(headSide.substr(0, offset)), end});
      EXPECT_EQ(open(&handle_), SLCONNECTION_ERROR);
      EXPECT_EQ(handle_, -1);
    }
  }
}

TEST_F(HandshakeTest, FailsWhenTheHeadResetsWithinAnyByteOfTheClient) {
  const Bytes first = integer(3300) + text("40MSG_SLGetMaxImageSize");
  const Bytes second = text("45MSG_SLGetProjDimension");
  for (std::size_t offset = 0; offset < first.size() + second.size(); ++offset) {
    SCOPED_TRACE(offset);
    Script script{reply(integer(1)), expect(first.substr(0, offset)), reset()};
    if (offset >= first.size()) {
      script = {reply(integer(1)), expect(first), reply(integers(8, 4, 0)), expect(second.substr(0, offset - first.size())), reset()};
    }
    ScriptedHead head(script);
    EXPECT_EQ(open(&handle_), SLCONNECTION_ERROR);
  }
}

TEST_F(HandshakeTest, PassesABadCameraStatusOnAndSaysFarewell) {
  for (const int status : {1, -1}) {
    ScriptedHead head({reply(integer(1) + integers(8, 4, status))});
    EXPECT_EQ(open(&handle_), SLSYSTEM_ERROR);
    EXPECT_EQ(readable(head.received()), readable(integer(3300) + text("40MSG_SLGetMaxImageSize") + farewell));
  }
}

TEST_F(HandshakeTest, HandlesGrowAndFailuresTakeNone) {
  ScriptedHead head(std::vector<Script>{handshake(), handshake()});
  int first = -1;
  int second = -1;
  ASSERT_EQ(open(&first), SLALL_OKAY);
  EXPECT_EQ(SLDevFree(first), SLALL_OKAY);
  EXPECT_EQ(SLDevAlloc("127.0.0.9", &handle_), SLCONNECTION_ERROR);
  ASSERT_EQ(open(&second), SLALL_OKAY);
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(SLDevFree(second), SLALL_OKAY);
}

TEST_F(HandshakeTest, ASessionKnowsNoSizesBeforeAndAfter) {
  CameraDevice device;
  EXPECT_EQ(device.GetCameraWidth(), -1);
  EXPECT_EQ(device.GetProjectorHeight(), -1);
  EXPECT_EQ(device.Init(nullptr), SLSYSTEM_ERROR);
  EXPECT_EQ(device.Close(), SLALL_OKAY) << "closing what was never open";

  ScriptedHead head(handshake());
  auto channel = std::make_unique<CommandChannel>();
  ASSERT_EQ(channel->Connect(headAddress), 0);
  ASSERT_EQ(device.Init(std::move(channel)), SLALL_OKAY);
  EXPECT_EQ(device.GetCameraWidth(), 8);
  EXPECT_EQ(device.GetCameraPixelCount(), 32);
  EXPECT_EQ(device.Close(), SLALL_OKAY);
  EXPECT_EQ(device.GetCameraWidth(), -1);
  EXPECT_EQ(device.GetProjectorWidth(), -1);
  EXPECT_EQ(device.Noop(), SLSYSTEM_ERROR);
}

TEST_F(HandshakeTest, AChannelWithoutASocketFails) {
  CameraDevice device;
  EXPECT_EQ(device.Init(std::make_unique<CommandChannel>()), SLCONNECTION_ERROR);
}

TEST_F(HandshakeTest, ClosingAfterTheHeadHasGoneReportsTheLostFarewell) {
  ScriptedHead head(handshake() + Script{reset()});
  ASSERT_EQ(open(&handle_), SLALL_OKAY);
  head.received();  // by now the connection is reset
  EXPECT_EQ(SLDevFree(handle_), SLCONNECTION_ERROR);
  EXPECT_EQ(SLDevFree(handle_), SLUNKNOWN_DEVICE_ID);
}

// The real time-outs of a session, each in a suite of its own because it takes half a minute.

void expectFailureAfterThirtySeconds(const std::function<int()>& action) {
  const auto start = Clock::now();
  EXPECT_EQ(action(), SLCONNECTION_ERROR);
  const auto took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(29990));
  EXPECT_LT(took, std::chrono::seconds(40));
}

TEST(SilenceInRealTimeTest, ACommandFailsAfterThirtySeconds) {
  OpenSession session({expect(text("21MSG_SLGetSerial")), stall()});
  expectFailureAfterThirtySeconds([&] { return session.device().GetSerial(nullptr); });
  EXPECT_EQ(session.free(), SLALL_OKAY);
}

// A head falls silent while a session is opened; what the client has sent by the end.
Bytes sentToSilentHead(const Script& script) {
  ScriptedHead head(script + Script{stall()});
  int handle = 77;
  expectFailureAfterThirtySeconds([&] { return open(&handle); });
  EXPECT_EQ(handle, -1);
  return head.received();
}

TEST(SilenceInTheGreetingInRealTimeTest, FailsTheOpeningAfterThirtySeconds) {
  EXPECT_EQ(readable(sentToSilentHead({reply(integer(1).substr(0, 3))})), readable(farewell));
}

const Script untilCameraSize{reply(integer(1)), expect(integer(3300)), expect(text("40MSG_SLGetMaxImageSize"))};

TEST(SilenceAtTheCameraSizeInRealTimeTest, FailsTheOpeningAfterThirtySeconds) {
  EXPECT_EQ(readable(sentToSilentHead(untilCameraSize)), readable(integer(3300) + text("40MSG_SLGetMaxImageSize")));
}

TEST(SilenceAtTheProjectorSizeInRealTimeTest, FailsTheOpeningAfterThirtySeconds) {
  const Script untilProjectorSize = untilCameraSize + Script{reply(integers(8, 4, 0)), expect(text("45MSG_SLGetProjDimension"))};
  EXPECT_EQ(readable(sentToSilentHead(untilProjectorSize)), readable(handshakeBytes()));
}

}  // namespace

}  // namespace fringix::test
