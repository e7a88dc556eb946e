// Starting and stopping a worker: in order, late, and by itself.
#include "threads/thread_mgr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "support/eventually.h"
#include "support/forced_end.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds patience{30};
constexpr std::chrono::milliseconds stopLimit{2000};

class TestThread : public ThreadMgr {
 public:
  explicit TestThread(std::function<std::int32_t(TestThread&)> body) : body_(std::move(body)) {}
  ~TestThread() override { Stop(); }

  std::int32_t ThreadProc() override {
    ++runs;
    const std::int32_t result = body_(*this);
    ++ends;
    return result;
  }

  void askToStop() { const_cast<platform::ManualResetEvent&>(stopEvent()).set(); }
  bool waitForStop() const { return stopEvent().wait(patience); }
  bool isAskedToStop() const { return stopEvent().wait(std::chrono::milliseconds(0)); }

  std::atomic<int> runs{0};
  std::atomic<int> ends{0};

 private:
  std::function<std::int32_t(TestThread&)> body_;
};

TEST(ThreadMgrTest, StoppingWhatNeverRanOnlyResetsTheEvent) {
  TestThread thread([](TestThread&) { return 0; });
  thread.askToStop();
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_FALSE(thread.isAskedToStop());
  EXPECT_EQ(thread.runs, 0);
}

TEST(ThreadMgrTest, AWorkerThatWaitsForTheStopEventEndsAtOnce) {
  TestThread thread([](TestThread& self) { return self.waitForStop() ? 0 : -1; });
  EXPECT_EQ(thread.Start(), 0U);
  const auto start = Clock::now();
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_LT(Clock::now() - start, stopLimit);
  EXPECT_EQ(thread.ends, 1);
  EXPECT_FALSE(thread.isAskedToStop()) << "ready for the next start";
}

TEST(ThreadMgrTest, AWorkerThatHasEndedIsStoppedWithSuccess) {
  TestThread thread([](TestThread&) { return -3; });
  thread.Start();
  ASSERT_TRUE(eventually([&] { return thread.ends == 1; }));
  EXPECT_EQ(thread.Stop(), 0);
}

TEST(ThreadMgrTest, StartingAgainStopsTheWorkerBefore) {
  TestThread thread([](TestThread& self) { return self.waitForStop() ? 0 : -1; });
  thread.Start();
  ASSERT_TRUE(eventually([&] { return thread.runs == 1; }));
  EXPECT_EQ(thread.Start(), 0U);
  EXPECT_EQ(thread.ends, 1);
  ASSERT_TRUE(eventually([&] { return thread.runs == 2; }));
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(thread.ends, 2);
}

TEST(ThreadMgrTest, TheDestructorStopsTheWorker) {
  std::atomic<bool> stopped{false};
  {
    TestThread thread([&](TestThread& self) {
      stopped = self.waitForStop();
      return 0;
    });
    thread.Start();
  }
  EXPECT_TRUE(stopped);
}

// What a stuck worker and the test know of each other.
struct Stuck {
  platform::ManualResetEvent release;
  std::atomic<bool> running{false};
  std::atomic<bool> wentOn{false};
  std::atomic<bool> knewItWasAbandoned{false};
};

std::shared_ptr<TestThread> startStuck(const std::shared_ptr<Stuck>& stuck) {
  auto thread = std::make_shared<TestThread>([stuck](TestThread&) {
    stuck->running = true;
    stuck->release.wait(patience);
    stuck->knewItWasAbandoned = platform::thisWorkerIsAbandoned();
    stuck->wentOn = true;
    return 0;
  });
  thread->Start(thread);
  EXPECT_TRUE(eventually([&] { return stuck->running.load(); }));
  return thread;
}

TEST(ThreadMgrTest, AWorkerThatDoesNotEndIsGivenUpAfterTwoSeconds) {
  const auto stuck = std::make_shared<Stuck>();
  const auto thread = startStuck(stuck);
  const auto start = Clock::now();
  EXPECT_EQ(thread->Stop(), 1);
  EXPECT_GE(Clock::now() - start, stopLimit - std::chrono::milliseconds(20));
  EXPECT_EQ(thread->Stop(), 0) << "it has been let go of";
  stuck->release.set();
  if (workersAreEndedByForce()) {
    EXPECT_FALSE(eventually([&] { return stuck->wentOn.load(); }, std::chrono::milliseconds(200)));
  } else {
    EXPECT_TRUE(eventually([&] { return stuck->wentOn.load(); }));
    EXPECT_TRUE(stuck->knewItWasAbandoned);
  }
}

TEST(ThreadMgrTest, AnAbandonedWorkerKeepsItsShareUntilItEnds) {
  if (workersAreEndedByForce()) GTEST_SKIP() << "workers are ended by force here: nothing is kept for them";
  const auto stuck = std::make_shared<Stuck>();
  auto thread = startStuck(stuck);
  const std::weak_ptr<TestThread> watched = thread;
  EXPECT_EQ(thread->Stop(), 1);
  thread.reset();
  EXPECT_FALSE(watched.expired());
  stuck->release.set();
  EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST(ThreadMgrTest, AWorkerThatStopsItselfWaitsForItself) {
  struct Outcome {
    std::atomic<bool> started{false};  // starting and stopping never overlap: a session does both under its lock
    std::atomic<bool> stopping{false};
    std::atomic<int> result{-1};
    std::atomic<bool> knewItWasAbandoned{false};
  };
  const auto outcome = std::make_shared<Outcome>();
  auto thread = std::make_shared<TestThread>([outcome](TestThread& self) {
    eventually([&] { return outcome->started.load(); });
    outcome->stopping = true;
    const int result = self.Stop();
    outcome->knewItWasAbandoned = platform::thisWorkerIsAbandoned();
    outcome->result = result;
    return 0;
  });
  thread->Start(thread);
  const auto start = Clock::now();
  outcome->started = true;
  if (workersAreEndedByForce()) {
    ASSERT_TRUE(eventually([&] { return outcome->stopping.load(); }));
    EXPECT_FALSE(eventually([&] { return outcome->result >= 0; }, stopLimit + std::chrono::milliseconds(500))) << "it ended there";
  } else {
    ASSERT_TRUE(eventually([&] { return outcome->result >= 0; }));
    EXPECT_GE(Clock::now() - start, stopLimit - std::chrono::milliseconds(20));
    EXPECT_EQ(outcome->result, 1);
    EXPECT_TRUE(outcome->knewItWasAbandoned);
  }
}

TEST(ThreadMgrTest, OtherThreadsAreNeverAbandoned) { EXPECT_FALSE(platform::thisWorkerIsAbandoned()); }

}  // namespace

}  // namespace fringix::test
