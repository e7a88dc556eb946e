// Triggers from the datagram to everybody who is told.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <stdexcept>

#include "api/trace.h"
#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"
#include "platform/datagram.h"
#include "support/captured_trace.h"
#include "support/eventually.h"
#include "support/test_window.h"

namespace fringix::test {

namespace {

using Calls = std::vector<std::string>;

constexpr std::uint32_t thisHost = 0x7F000001;
constexpr std::uint32_t otherHead = 0x7F000002;
constexpr std::uint16_t triggerPort = 44331;
constexpr std::chrono::milliseconds aMoment{300};
constexpr int serial = 70123;

const Bytes trigger = "02UDP_GPIO";

void sendFrom(std::uint32_t head, const Bytes& datagram) {
  ASSERT_TRUE(platform::sendDatagram(head, {thisHost, triggerPort}, datagram.data(), datagram.size()));
}

// A head that tells its serial number when it is asked.
Script tellsItsSerial(int number = serial) { return {expect(text("21MSG_SLGetSerial")), reply(integer(number))}; }

// Who was called, in order, by any thread.
class Journal {
 public:
  void note(const std::string& call) {
    const std::lock_guard guard(lock_);
    calls_.push_back(call);
  }
  Calls take() {
    const std::lock_guard guard(lock_);
    return std::exchange(calls_, {});
  }
  std::size_t size() {
    const std::lock_guard guard(lock_);
    return calls_.size();
  }

 private:
  std::mutex lock_;
  Calls calls_;
};

void noteEvent(std::int32_t event, void* context, std::int64_t parameter) {
  static_cast<Journal*>(context)->note("event " + std::to_string(event) + " of " + std::to_string(parameter));
}

class TriggerTest : public testing::Test {
 protected:
  // Raises triggers until one has got through: the listener may still be on its way to the port.
  static void awaitListener(Journal& journal, std::uint32_t head = thisHost) {
    ASSERT_TRUE(eventually([&] {
      sendFrom(head, trigger);
      return eventually([&] { return journal.size() > 0; }, aMoment);
    }));
    platform::sleepFor(aMoment);
    journal.take();
  }

  static Calls awaited(Journal& journal, std::size_t count) {
    eventually([&] { return journal.size() >= count; });
    return journal.take();
  }

  platform::SocketLibrary library_;
  Journal journal_;
};

const Calls oneEvent{"event 1 of 70123"};

TEST_F(TriggerTest, GoesToCallbacksTriggerWindowHandlersAndEventWindowsInThisOrder) {
  static Journal* journal = nullptr;
  journal = &journal_;
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  TestWindow window;
  ICameraDevice& device = session.device();
  SLRegisterGPIOCallback(session.handle(),
                         [](void* context) { journal->note(context == nullptr ? "callback" : "callback with something"); });
  device.SetContextCallback([](void* context) { static_cast<Journal*>(context)->note("context callback"); }, &journal_);
  device.SetTriggerWindow(window.handle(), 0x8001);
  SLRegisterGPIOHandle(session.handle(), window.handle(), 0x8002);
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 3), (Calls{"callback", "context callback", "event 1 of 70123"}));
  EXPECT_EQ(session.free(), SLALL_OKAY);
  EXPECT_EQ(window.posts(), (std::vector<Post>{{0x8001, 0, 0}, {0x8002, 1, serial}}));
}

TEST_F(TriggerTest, ATriggerWindowWithoutAMessageGetsNone) {
  OpenSession session(tellsItsSerial());
  TestWindow window;
  session.device().SetTriggerWindow(window.handle(), 0);
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  session.free();
  EXPECT_EQ(window.posts(), std::vector<Post>{});
}

TEST_F(TriggerTest, TheCallbackIsReplacedAndCleared) {
  static std::atomic<int> calls{0};
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  SLRegisterGPIOCallback(session.handle(), [](void*) { calls += 100; });
  SLRegisterGPIOCallback(session.handle(), [](void*) { ++calls; });
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  SLRegisterGPIOCallback(session.handle(), nullptr);
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  EXPECT_EQ(calls, 1);
}

TEST_F(TriggerTest, TheTextMayStandAnywhereInEighteenBytes) {
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  for (const Bytes& datagram : {"12345678" + trigger, trigger + "12345678", trigger + Bytes("\0x", 2), trigger}) {
    sendFrom(thisHost, datagram);
    EXPECT_EQ(awaited(journal_, 1), oneEvent) << readable(datagram);
  }
}

TEST_F(TriggerTest, WhatIsNoTriggerIsSaidToHaveOccurredAndTriggersNothing) {
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  const std::vector<Bytes> strangers{Bytes(),         "x", "02UDP_GPI", "02UDP_GPI0", "12345678" + trigger + "9", trigger + Bytes(90, 'x'),
                                     Bytes(2000, 'x')};
  CapturedTrace capture;
  setDebugFlag(1);
  for (const Bytes& datagram : strangers) {
    sendFrom(thisHost, datagram);
    platform::sleepFor(std::chrono::milliseconds(20));
  }
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent) << "only the last one was a trigger";
  setDebugFlag(0);
  const auto lines = capture.lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "<QOR> GPIOThread: Trigger occured!\r\n"), static_cast<int>(strangers.size()) + 1);
}

TEST_F(TriggerTest, FromAnotherAddressTriggersNothing) {
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  sendFrom(otherHead, trigger);
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  EXPECT_FALSE(eventually([&] { return journal_.size() > 0; }, aMoment));
}

TEST_F(TriggerTest, AnAddressThatIsNotWrittenInFullGetsNone) {
  OpenSession shortened(Script{}, {}, "127.0.2");
  OpenSession session(tellsItsSerial());
  Journal none;
  SLRegisterEventhandler(shortened.handle(), noteEvent, &none);
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  sendFrom(otherHead, trigger);
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  platform::sleepFor(aMoment);
  EXPECT_EQ(none.size(), 0U);
}

TEST_F(TriggerTest, ReachesOnlyTheSessionOfItsHead) {
  OpenSession first(tellsItsSerial());
  OpenSession second(tellsItsSerial(8), {}, "127.0.0.2");
  Journal others;
  SLRegisterEventhandler(first.handle(), noteEvent, &journal_);
  SLRegisterEventhandler(second.handle(), noteEvent, &others);
  awaitListener(journal_);
  awaitListener(others, otherHead);
  EXPECT_EQ(journal_.take(), Calls{});
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  sendFrom(otherHead, trigger);
  const Calls calls = awaited(others, 1);
  EXPECT_EQ(calls.front(), "event 1 of 8");
  platform::sleepFor(aMoment);
  EXPECT_EQ(journal_.take(), Calls{});
}

TEST_F(TriggerTest, ClosingTheReceiverHandsThePortOver) {
  auto first = std::make_unique<OpenSession>(tellsItsSerial());
  SLRegisterEventhandler(first->handle(), noteEvent, &journal_);
  awaitListener(journal_);
  OpenSession second(tellsItsSerial(8), {}, "127.0.0.2");
  Journal others;
  SLRegisterEventhandler(second.handle(), noteEvent, &others);
  awaitListener(others, otherHead);
  CapturedTrace capture;
  first.reset();
  awaitListener(others, otherHead);
  EXPECT_EQ(journal_.take(), Calls{});
}

TEST_F(TriggerTest, RegistrationsOutliveTheConnection) {
  OpenSession session(tellsItsSerial());
  EXPECT_EQ(SLRegisterEventhandler(session.handle(), noteEvent, &journal_), SLALL_OKAY);
  session.device().Close();
  EXPECT_EQ(SLUnregisterEventhandler(session.handle(), noteEvent, &journal_), SLALL_OKAY);
  EXPECT_EQ(SLUnregisterEventhandler(session.handle(), noteEvent, &journal_), SLALL_OKAY) << "not there any more";
}

TEST_F(TriggerTest, AThrowingHandlerEndsTheListenerAndAnotherTakesOver) {
  OpenSession first(tellsItsSerial());
  SLRegisterEventhandler(first.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  OpenSession second(tellsItsSerial(8), {}, "127.0.0.2");
  Journal others;
  SLRegisterEventhandler(second.handle(), noteEvent, &others);
  SLRegisterEventhandler(
      first.handle(), [](std::int32_t, void*, std::int64_t) { throw std::runtime_error("the handler's"); }, nullptr);
  CapturedTrace capture;
  setDebugFlag(1);
  sendFrom(thisHost, trigger);
  awaitListener(others, otherHead);
  setDebugFlag(0);
  const auto lines = capture.lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "<QOR> GPIOThread: someone raised an exception, returning from ThreadProc\r\n"), 1);
  EXPECT_EQ(first.free(), SLALL_OKAY);
}

}  // namespace

}  // namespace fringix::test
