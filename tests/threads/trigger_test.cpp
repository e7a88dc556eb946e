// Triggers from the datagram to everybody who is told.
#include <atomic>

#include "device/camera_device.h"
#include "diagnosis/trace.h"
#include "support/captured_trace.h"
#include "support/test_window.h"
#include "threads/raised_triggers.h"

namespace fringix::test {

namespace {

void connect(CameraDevice& session) {
  auto channel = std::make_unique<CommandChannel>();
  ASSERT_EQ(channel->Connect("127.0.0.1"), 0);
  ASSERT_EQ(session.Init(std::move(channel)), SLALL_OKAY);
}

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

// Stays in a call until the test has looked around.
struct Stay {
  platform::ManualResetEvent entered;
  platform::ManualResetEvent leave;
  void call() {
    entered.set();
    leave.wait(patience);
  }
};

TEST_F(TriggerTest, TheWindowPostsHaveTheirPlaceAmongTheCalls) {
  Stay inCallback;
  Stay inHandler;
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  TestWindow window;
  ICameraDevice& device = session.device();
  device.SetContextCallback([](void* context) { static_cast<Stay*>(context)->call(); }, &inCallback);
  device.SetTriggerWindow(window.handle(), 0x8001);
  device.AddEventHandler([](std::int32_t, void* context, std::int64_t) { static_cast<Stay*>(context)->call(); }, &inHandler);
  device.AddEventWindow(window.handle(), 0x8002);
  sendFrom(thisHost, trigger);
  ASSERT_TRUE(inCallback.entered.wait(patience));
  EXPECT_EQ(window.posts(), std::vector<Post>{});
  inCallback.leave.set();
  ASSERT_TRUE(inHandler.entered.wait(patience));
  EXPECT_EQ(window.posts(), (std::vector<Post>{{0x8001, 0, 0}}));
  inHandler.leave.set();
  EXPECT_EQ(session.free(), SLALL_OKAY);
  EXPECT_EQ(window.posts(), (std::vector<Post>{{0x8002, 1, serial}}));
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

TEST_F(TriggerTest, AnEventWindowThatIsRemovedGetsNoMoreEvents) {
  OpenSession session(tellsItsSerial());
  TestWindow window;
  for (const std::uint32_t message : {0x8001U, 0x8002U}) session.device().AddEventWindow(window.handle(), message);
  EXPECT_EQ(session.device().RemoveEventWindow(window.handle(), 0x8001), SLALL_OKAY);
  EXPECT_EQ(session.device().RemoveEventWindow(window.handle(), 0x8003), SLALL_OKAY) << "never there";
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  session.free();
  const std::vector<Post> posts = window.posts();
  EXPECT_FALSE(posts.empty());
  for (const Post& post : posts) EXPECT_EQ(post.message, 0x8002U);
}

TEST_F(TriggerTest, TheCallbackIsReplacedAndCleared) {
  static std::atomic<int> calls;
  calls = 0;
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
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);  // the receiver: it hears each trigger once
  OpenSession shortened(Script{}, {}, "127.0.2");
  Journal none;
  SLRegisterEventhandler(shortened.handle(), noteEvent, &none);
  platform::sleepFor(aMoment);
  sendFrom(otherHead, trigger);
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  platform::sleepFor(aMoment);
  EXPECT_EQ(none.size(), 0U);
}

TEST_F(TriggerTest, RegistrationsOutliveTheConnection) {
  ScriptedHead head(std::vector<Script>{handshake(), handshake() + tellsItsSerial()});
  const auto session = CameraDevice::create();
  TestWindow window;
  session->AddEventHandler(noteEvent, &journal_);
  session->AddEventWindow(window.handle(), 0x8002);
  session->SetTriggerWindow(window.handle(), 0x8001);
  session->SetGPIOCallback(noteCallback);
  session->SetContextCallback([](void* context) { static_cast<Journal*>(context)->note("context callback"); }, &journal_);
  connect(*session);
  EXPECT_EQ(session->Close(), SLALL_OKAY);
  connect(*session);
  ASSERT_TRUE(eventually([&] {
    sendFrom(thisHost, trigger);
    return eventually([&] { return journal_.size() > 2; }, aMoment);  // with the second one the first has gone everywhere
  }));
  EXPECT_EQ(session->Close(), SLALL_OKAY);
  const Calls calls = journal_.take();
  const std::vector<Post> posts = window.posts();
  ASSERT_GE(calls.size(), 2U);
  ASSERT_GE(posts.size(), 2U);
  EXPECT_EQ(Calls(calls.begin(), calls.begin() + 2), (Calls{"context callback", "event 1 of 70123"}));
  EXPECT_EQ(std::vector<Post>(posts.begin(), posts.begin() + 2), (std::vector<Post>{{0x8001, 0, 0}, {0x8002, 1, serial}}));
  EXPECT_GT(callbacks.size(), 0U);
}

TEST_F(TriggerTest, UnregisteringWorksWithoutAConnectionAndTwice) {
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  session.device().Close();
  EXPECT_EQ(SLUnregisterEventhandler(session.handle(), noteEvent, &journal_), SLALL_OKAY);
  EXPECT_EQ(SLUnregisterEventhandler(session.handle(), noteEvent, &journal_), SLALL_OKAY) << "not there any more";
}

}  // namespace

}  // namespace fringix::test
