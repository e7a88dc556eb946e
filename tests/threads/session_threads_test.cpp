// A session and its two threads: started, stopped, and what happens when one of them cannot end, or breaks the connection itself.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "aside/run_aside.h"
#include "device/camera_device.h"
#include "device/open_session.h"
#include "diagnosis/trace.h"
#include "fringix/fringix.h"
#include "platform/datagram.h"
#include "support/captured_trace.h"
#include "support/driven_clock.h"
#include "support/eventually.h"
#include "support/forced_end.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t headAddress = 0x7F000001;
constexpr std::uint16_t triggerPort = 44331;
constexpr std::int64_t muchLater = 1000;  // seconds
constexpr std::chrono::milliseconds stopLimit{2000};
constexpr std::chrono::milliseconds aMoment{100};

const Bytes noop = text("100MSG_SLNOOP");
const Bytes farewell = text("ByeBye=");
const Bytes measurement = text("60MSG_SLStartMeasurement") + integer(7);
const Bytes serialRequest = text("21MSG_SLGetSerial");

bool contains(const std::vector<std::string>& lines, const std::string& part) {
  return std::any_of(lines.begin(), lines.end(), [&](const std::string& text) { return text.find(part) != std::string::npos; });
}

void raiseTrigger() { platform::sendDatagram(headAddress, {headAddress, triggerPort}, "02UDP_GPIO", 10); }

// Whether a call on another thread comes back.
template <class Call>
bool returns(Call call) {
  const auto returned = std::make_shared<std::atomic<bool>>(false);
  runAside([call, returned] {
    call();
    *returned = true;
  });
  return eventually([&] { return returned->load(); }, stopLimit);
}

// A session whose heartbeat lives by the test's clock, with a head that goes on as the test wants.
class SessionThreadsTest : public testing::Test {
 protected:
  void open(const Script& script) {
    head_ = std::make_unique<ScriptedHead>(handshake() + script);
    session_ = CameraDevice::create(clock_);
    auto channel = std::make_unique<CommandChannel>();
    ASSERT_EQ(channel->Connect("127.0.0.1"), 0);
    ASSERT_EQ(session_->Init(std::move(channel)), SLALL_OKAY);
  }

  Bytes sent() { return head_->received().substr(handshakeBytes().size()); }

  // Whether a command comes back at all. A thread that waits for ever keeps the session that it waits in.
  bool commandsReturn() {
    return returns([session = session_] { session->Noop(); });
  }

  // After a thread of the session has broken the connection and waited for itself.
  void expectWhatIsLeftOfTheSession() {
    if (workersAreEndedByForce()) {
      EXPECT_FALSE(commandsReturn()) << "the ended thread keeps the lock; kept on purpose";
      new std::shared_ptr<CameraDevice>(std::move(session_));  // it can never be closed
    } else {
      EXPECT_TRUE(eventually([&] { return session_->GetCameraWidth() == -1; }));
      EXPECT_EQ(session_->Noop(), SLSYSTEM_ERROR);
      EXPECT_EQ(session_->Close(), SLALL_OKAY);
    }
  }

  platform::SocketLibrary library_;
  DrivenClock& clock_ = lastingClock();
  std::unique_ptr<ScriptedHead> head_;
  std::shared_ptr<CameraDevice> session_;
};

TEST_F(SessionThreadsTest, TheHeartbeatKeepsAnIdleConnectionAlive) {
  open({expect(noop)});
  clock_.wake(10);
  ASSERT_TRUE(eventually([&] { return clock_.looks == 1; }));
  clock_.wake(16);
  ASSERT_TRUE(eventually([&] { return clock_.waits == 3; }));
  EXPECT_EQ(session_->Close(), SLALL_OKAY);
  EXPECT_EQ(readable(sent()), readable(noop + farewell));
}

TEST_F(SessionThreadsTest, ClosingEndsBothThreadsAtOnce) {
  open({});
  const auto start = Clock::now();
  EXPECT_EQ(session_->Close(), SLALL_OKAY);
  EXPECT_LT(Clock::now() - start, stopLimit);
  const int waits = clock_.waits;
  clock_.wake(muchLater);
  EXPECT_FALSE(eventually([&] { return clock_.looks > 0 || clock_.waits > waits; }, aMoment)) << "the heartbeat has ended";
}

TEST_F(SessionThreadsTest, AFailedHandshakeStopsTheThreadsThatItStarted) {
  ScriptedHead head({reply(integer(1)), expect(integer(3300)), expect(text("40MSG_SLGetMaxImageSize")), reply(integers(8, 4, 1))});
  const auto session = CameraDevice::create(clock_);
  auto channel = std::make_unique<CommandChannel>();
  ASSERT_EQ(channel->Connect("127.0.0.1"), 0);
  EXPECT_EQ(session->Init(std::move(channel)), SLSYSTEM_ERROR);
  clock_.wake(muchLater);
  EXPECT_FALSE(eventually([&] { return clock_.looks > 0; }, aMoment));
}

TEST_F(SessionThreadsTest, ASessionThatIsLetGoOfIsClosed) {
  open({});
  session_.reset();
  EXPECT_EQ(readable(sent()), readable(farewell));
}

// What a handler does on the measuring thread, which holds the session lock.
struct CloseFromHandler {
  CameraDevice& session;
  DrivenClock& clock;
  int result = 0;
  Clock::duration took{};
  std::function<void()> before = [] {};

  static void handle(std::int32_t, void* context, std::int64_t) {
    auto& self = *static_cast<CloseFromHandler*>(context);
    self.clock.wake(muchLater);
    EXPECT_TRUE(eventually([&] { return self.clock.looks == 1; }));
    platform::sleepFor(aMoment);  // by now the heartbeat waits for the lock
    self.before();
    const auto start = Clock::now();
    self.result = self.session.Close();
    self.took = Clock::now() - start;
  }
};

TEST_F(SessionThreadsTest, AHeartbeatThatWaitsForTheLockIsGivenUpAndCloseSaysSo) {
  open({expect(measurement), reply(integer(0)), expect(serialRequest), reply(integer(70123))});
  CloseFromHandler closing{*session_, clock_};
  session_->AddEventHandler(CloseFromHandler::handle, &closing);
  CapturedTrace capture;
  setDebugFlag(1);
  EXPECT_EQ(session_->StartMeasurement(7), SLALL_OKAY);
  setDebugFlag(0);
  EXPECT_EQ(closing.result, SLSYSTEM_ERROR);
  EXPECT_GE(closing.took, stopLimit - std::chrono::milliseconds(20));
  EXPECT_TRUE(contains(capture.lines(), "Cameradevice: Error while closing, cannot stop HeartbeatThread\r\n"));
  EXPECT_EQ(readable(sent()), readable(measurement + serialRequest + farewell)) << "the heartbeat sent nothing after that";
  EXPECT_EQ(session_->Close(), SLALL_OKAY) << "closed all the same";
}

TEST_F(SessionThreadsTest, AFarewellThatCannotBeSentCountsMoreThanAThreadThatIsGivenUp) {
  open({expect(measurement), reply(integer(0)), expect(serialRequest), reply(integer(70123)), reset()});
  CloseFromHandler closing{*session_, clock_};
  closing.before = [&] { head_->received(); };  // by then the connection is reset
  session_->AddEventHandler(CloseFromHandler::handle, &closing);
  CapturedTrace capture;
  setDebugFlag(1);
  EXPECT_EQ(session_->StartMeasurement(7), SLALL_OKAY);
  setDebugFlag(0);
  EXPECT_EQ(closing.result, SLCONNECTION_ERROR);
  EXPECT_TRUE(contains(capture.lines(), "Cameradevice: Error while closing, cannot stop HeartbeatThread\r\n"));
  EXPECT_TRUE(contains(capture.lines(), "Cameradevice: closed\r\n"));
}

TEST_F(SessionThreadsTest, AConnectionThatHasFailedGetsNoFarewell) {
  const Bytes version = text("20MSG_SLGetProtocolVersion");
  const Bytes request = text("200MSG_SLRS232Exec") + text("go");
  open({expect(version), reply(integer(3300)), expect(request), reply("    -1")});  // no length; and then it reads on
  char answer[8];
  EXPECT_EQ(session_->ExecRS232("go", answer, sizeof answer), SLCONNECTION_ERROR);
  EXPECT_EQ(readable(sent()), readable(version + request));
  EXPECT_EQ(session_->Close(), SLALL_OKAY);
}

TEST_F(SessionThreadsTest, AHandlerThatThrowsDuringAMeasurementLeavesTheSessionToOthers) {
  OpenSession session({expect(measurement), reply(integer(0)), expect(serialRequest), reply(integer(70123))});
  SLRegisterEventhandler(
      session.handle(), [](std::int32_t, void*, std::int64_t) { throw std::runtime_error("the handler's"); }, nullptr);
  EXPECT_EQ(SLStartMeasurement(session.handle(), 7), SLSYSTEM_ERROR);
  EXPECT_TRUE(returns([&device = session.device()] { device.Noop(); }));
  EXPECT_EQ(readable(session.sent()), readable(measurement + serialRequest + noop));
}

TEST_F(SessionThreadsTest, AHeartbeatThatBreaksTheConnectionWaitsForItself) {
  open({reset()});
  head_->received();
  CapturedTrace capture;
  setDebugFlag(1);
  clock_.wake(muchLater);
  EXPECT_FALSE(eventually([&] { return contains(capture.lines(), "Cameradevice: Error while closing"); }, stopLimit - aMoment));
  const bool reported = eventually([&] { return contains(capture.lines(), "cannot stop HeartbeatThread"); }, 2 * stopLimit);
  EXPECT_EQ(reported, !workersAreEndedByForce()) << "a thread that ends itself there says nothing more";
  expectWhatIsLeftOfTheSession();
  setDebugFlag(0);
  EXPECT_EQ(contains(capture.lines(), "Cameradevice: closed on error"), !workersAreEndedByForce());
}

// A callback that stays in its first call until it is let go.
struct LongCall {
  static inline std::atomic<int> entered{0};
  static inline platform::ManualResetEvent release;

  static void call(void*) {
    if (++entered == 1) release.wait(std::chrono::seconds(30));
  }
};

// On Windows a listener that is ended by force may leave the port's lock behind, and no other of its process listens then.
class GivenUpListenerInAFreshProcessTest : public SessionThreadsTest {};
class SelfStoppingListenerInAFreshProcessTest : public SessionThreadsTest {};

TEST_F(GivenUpListenerInAFreshProcessTest, AListenerInALongCallbackIsGivenUpAndCloseSaysSo) {
  open({});
  std::atomic<int> events{0};
  session_->SetGPIOCallback(LongCall::call);
  session_->AddEventHandler([](std::int32_t, void* context, std::int64_t) { ++*static_cast<std::atomic<int>*>(context); }, &events);
  ASSERT_TRUE(eventually([] {
    raiseTrigger();
    return eventually([] { return LongCall::entered > 0; }, aMoment);
  }));
  CapturedTrace capture;
  setDebugFlag(1);
  EXPECT_EQ(session_->Close(), SLSYSTEM_ERROR);
  setDebugFlag(0);
  EXPECT_TRUE(contains(capture.lines(), "Cameradevice: Error while closing, cannot stop GPIOThread\r\n"));
  LongCall::release.set();
  platform::sleepFor(aMoment);
  EXPECT_EQ(events, 0) << "what was given up calls nobody any more";
}

TEST_F(SelfStoppingListenerInAFreshProcessTest, AListenerThatBreaksTheConnectionWaitsForItself) {
  open({expect(serialRequest), reset()});
  CapturedTrace capture;
  setDebugFlag(1);
  ASSERT_TRUE(eventually([&] {
    raiseTrigger();
    return eventually([&] { return contains(capture.lines(), "Cameradevice: Closing"); }, aMoment);
  }));
  const bool reported = eventually([&] { return contains(capture.lines(), "cannot stop GPIOThread"); }, 2 * stopLimit);
  EXPECT_EQ(reported, !workersAreEndedByForce());
  expectWhatIsLeftOfTheSession();
  setDebugFlag(0);
  EXPECT_EQ(contains(capture.lines(), "Cameradevice: closed on error"), !workersAreEndedByForce());
}

}  // namespace

}  // namespace fringix::test
