// Several listeners of one host: one receives, the others are told, and one of them takes over.
#include <atomic>
#include <stdexcept>
#include <thread>

#include "diagnosis/trace.h"
#include "platform/trigger_exchange.h"
#include "support/captured_trace.h"
#include "threads/raised_triggers.h"

namespace fringix::test {

namespace {

constexpr const char* exceptionLine = "<QOR> GPIOThread: someone raised an exception, returning from ThreadProc\r\n";

class TriggerFollowersTest : public TriggerTest {};

TEST_F(TriggerFollowersTest, ReachesOnlyTheSessionOfItsHead) {
  OpenSession first(tellsItsSerial());
  SLRegisterEventhandler(first.handle(), noteEvent, &journal_);
  awaitListener(journal_);  // the receiver: it hears each trigger once
  OpenSession second(tellsItsSerial(8), {}, "127.0.0.2");
  Journal others;
  SLRegisterEventhandler(second.handle(), noteEvent, &others);
  awaitListener(others, otherHead);
  EXPECT_EQ(journal_.take(), Calls{});
  sendFrom(thisHost, trigger);
  EXPECT_EQ(awaited(journal_, 1), oneEvent);
  ASSERT_TRUE(raisedUntilHeard(others, otherHead));
  EXPECT_EQ(others.take().front(), "event 1 of 8");
  platform::sleepFor(aMoment);
  EXPECT_EQ(journal_.take(), Calls{});
}

// One more listener of this host, which is told of all triggers and belongs to no session. It follows as soon as another receives.
class Follower {
 public:
  Follower() {
    exchange_.openBlock();
    exchange_.openLock();
    exchange_.openNotification();
    thread_ = std::thread([this] { follow(); });
  }
  ~Follower() {
    stop_.set();
    thread_.join();
  }
  Follower(const Follower&) = delete;
  Follower& operator=(const Follower&) = delete;

  bool wasTold(std::uint32_t sender) const { return last_ == sender; }

 private:
  void follow() {
    std::uint32_t sender = 0;
    while (exchange_.waitForTurn(stop_) == platform::TriggerExchange::Turn::trigger) {
      if (exchange_.readSender(&sender)) last_ = sender;
    }
  }

  platform::ManualResetEvent stop_;
  platform::TriggerExchange exchange_;
  std::atomic<std::uint32_t> last_{0};
  std::thread thread_;
};

TEST_F(TriggerFollowersTest, FromTheAddressOfNoSessionWakesTheFollowersAndCallsNobody) {
  OpenSession receiver(tellsItsSerial());
  SLRegisterEventhandler(receiver.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  OpenSession following(tellsItsSerial(8), {}, "127.0.0.2");
  Journal others;
  SLRegisterEventhandler(following.handle(), noteEvent, &others);
  awaitListener(others, otherHead);
  SLRegisterGPIOCallback(receiver.handle(), noteCallback);
  SLRegisterGPIOCallback(following.handle(), noteCallback);
  const Follower follower;
  EXPECT_TRUE(eventually([&] {
    sendFrom(noHead, trigger);
    return eventually([&] { return follower.wasTold(noHead); }, aMoment);
  }));
  EXPECT_FALSE(eventually([&] { return journal_.size() + others.size() + callbacks.size() > 0; }, aMoment));
  awaitListener(others, otherHead);
  EXPECT_GT(callbacks.size(), 0U);
}

TEST_F(TriggerFollowersTest, ClosingTheReceiverHandsThePortOver) {
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

TEST_F(TriggerFollowersTest, AThrowingHandlerEndsTheListenerAndAnotherTakesOver) {
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
  EXPECT_EQ(std::count(lines.begin(), lines.end(), exceptionLine), 1);
  EXPECT_EQ(first.free(), SLALL_OKAY);
}

TEST_F(TriggerFollowersTest, AThrowingCallbackOfAFollowerEndsThatOneAlone) {
  OpenSession receiver(tellsItsSerial());
  SLRegisterEventhandler(receiver.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  auto following = std::make_unique<OpenSession>(tellsItsSerial(8), HeadSizes{}, "127.0.0.2");
  SLRegisterGPIOCallback(following->handle(), [](void*) { throw std::runtime_error("the callback's"); });
  CapturedTrace capture;
  setDebugFlag(1);
  const auto exceptions = [&] {
    const auto lines = capture.lines();
    return std::count(lines.begin(), lines.end(), exceptionLine);
  };
  EXPECT_TRUE(eventually([&] {
    sendFrom(otherHead, trigger);
    return eventually([&] { return exceptions() > 0; }, aMoment);
  }));
  awaitListener(journal_);
  OpenSession third(tellsItsSerial(9), {}, "127.0.0.3");
  Journal others;
  SLRegisterEventhandler(third.handle(), noteEvent, &others);
  awaitListener(others, thirdHead);
  setDebugFlag(0);
  EXPECT_EQ(exceptions(), 1);
  EXPECT_EQ(following->free(), SLALL_OKAY);
  receiver.free();
  awaitListener(others, thirdHead);
}

}  // namespace

}  // namespace fringix::test
