// Subscriptions to the events of a real session.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <fringix/fringix.hpp>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "head/serving/head_server.h"
#include "small_head.h"

namespace fringix {
namespace {

using Heard = std::vector<std::pair<std::int32_t, std::int64_t>>;

// What a function was called with, from any thread.
class Record {
 public:
  Subscription::Function function() {
    return [this](std::int32_t event, std::int64_t serial) { add(event, serial); };
  }

  void add(std::int32_t event, std::int64_t serial) {
    const std::lock_guard lock(mutex_);
    heard_.emplace_back(event, serial);
    changed_.notify_all();
  }

  bool waitFor(std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(5)) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return heard_.size() >= count; });
  }

  Heard heard() {
    const std::lock_guard lock(mutex_);
    return heard_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  Heard heard_;
};

const std::pair<std::int32_t, std::int64_t> trigger{SLEVENT_TRIGGER, 4711};
const std::pair<std::int32_t, std::int64_t> measurement{SLEVENT_MEASUREMENT, 4711};

struct StartedHead : head::HeadServer {
  StartedHead() : HeadServer(test::smallHead()) { start(); }
};

class WrapperEvents : public testing::Test {
 protected:
  WrapperEvents() { waitForListener(); }

  // A listener that has just started may miss a trigger.
  void waitForListener() {
    Record record;
    const Subscription subscription(device_, record.function());
    for (int i = 0; i < 10; ++i) {
      server_.raiseTrigger();
      if (record.waitFor(1, std::chrono::seconds(1))) return;
    }
    FAIL() << "no trigger was heard";
  }

  // Whether a trigger has gone its way: subscriptions are called in order, so all before this one have been.
  void triggerAndWait() {
    Record last;
    const Subscription subscription(device_, last.function());
    server_.raiseTrigger();
    ASSERT_TRUE(last.waitFor(1));
  }

  StartedHead server_;
  Device device_{"127.0.0.1"};
  Record record_;
};

static_assert(!std::is_copy_constructible_v<Subscription> && !std::is_copy_assignable_v<Subscription>);
static_assert(std::is_nothrow_move_constructible_v<Subscription> && std::is_nothrow_move_assignable_v<Subscription>);

TEST_F(WrapperEvents, TriggersAreHeardWithTheSerialNumber) {
  const Subscription subscription(device_, record_.function());
  triggerAndWait();
  EXPECT_EQ(record_.heard(), Heard{trigger});
}

TEST_F(WrapperEvents, MeasurementsAreHeardBeforeTheyReturn) {
  std::uint32_t sequence = device_.allocateSequence(1);
  std::thread::id thread;
  const Subscription subscription(device_, [&](std::int32_t event, std::int64_t serial) {
    thread = std::this_thread::get_id();
    record_.add(event, serial);
  });
  device_.measure(sequence, 0, 0);
  EXPECT_TRUE(record_.heard().empty()) << "parts are not told";
  device_.measure(sequence);
  EXPECT_EQ(record_.heard(), Heard{measurement});
  EXPECT_EQ(thread, std::this_thread::get_id());
  server_.model().setMeasurementFault(-2);
  EXPECT_THROW(device_.measure(sequence), Error);
  EXPECT_EQ(record_.heard(), (Heard{measurement, measurement})) << "failed ones too";
}

TEST_F(WrapperEvents, NothingIsHeardAfterTheEnd) {
  {
    const Subscription subscription(device_, record_.function());
    triggerAndWait();
  }
  Subscription second(device_, record_.function());
  second.reset();
  second.reset();
  triggerAndWait();
  EXPECT_EQ(record_.heard().size(), 1U);
}

TEST_F(WrapperEvents, EachSubscriptionIsHeardByItself) {
  const Subscription first(device_, record_.function());
  const Subscription second(device_, record_.function());
  triggerAndWait();
  EXPECT_EQ(record_.heard(), (Heard{trigger, trigger}));
}

TEST_F(WrapperEvents, MovingGoesOnHearing) {
  Subscription first(device_, record_.function());
  Subscription second(std::move(first));
  triggerAndWait();
  EXPECT_EQ(record_.heard().size(), 1U);
  Subscription third;
  third = std::move(second);
  triggerAndWait();
  EXPECT_EQ(record_.heard().size(), 2U);
  third = Subscription(device_, record_.function());
  triggerAndWait();
  EXPECT_EQ(record_.heard().size(), 3U) << "the one that was replaced has ended";
}

TEST_F(WrapperEvents, AFunctionMayEndItsOwnSubscription) {
  Subscription subscription;
  const auto captured = std::make_shared<Record*>(&record_);
  subscription = Subscription(device_, [&subscription, captured](std::int32_t event, std::int64_t serial) {
    subscription.reset();
    (*captured)->add(event, serial);  // what was captured is still there
  });
  triggerAndWait();
  triggerAndWait();
  EXPECT_EQ(record_.heard().size(), 1U);
  EXPECT_EQ(captured.use_count(), 1) << "and gone afterwards";
}

TEST_F(WrapperEvents, AFunctionMaySubscribeAnother) {
  Subscription inner;
  const Subscription outer(device_, [&](std::int32_t, std::int64_t) { inner = Subscription(device_, record_.function()); });
  triggerAndWait();
  triggerAndWait();
  EXPECT_GE(record_.heard().size(), 1U);
}

TEST_F(WrapperEvents, AnExceptionIsLostAndTheNextTriggerHeard) {
  const Subscription subscription(device_, [&](std::int32_t event, std::int64_t serial) {
    record_.add(event, serial);
    throw std::runtime_error("a bug");
  });
  triggerAndWait();
  triggerAndWait();
  EXPECT_EQ(record_.heard(), (Heard{trigger, trigger}));
}

TEST_F(WrapperEvents, AClosedDeviceHasNoEvents) {
  device_.close();
  try {
    const Subscription subscription(device_, record_.function());
    FAIL() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_STREQ(error.operation(), "SLRegisterEventhandler");
    EXPECT_EQ(error.code(), SLUNKNOWN_DEVICE_ID);
  }
}

std::atomic<int> firstCalls = 0;
std::atomic<int> secondCalls = 0;

TEST_F(WrapperEvents, ATriggerCallbackReplacesTheOneBefore) {
  device_.setTriggerCallback([](void*) { ++firstCalls; });
  triggerAndWait();
  device_.setTriggerCallback([](void*) { ++secondCalls; });
  triggerAndWait();
  device_.setTriggerCallback(nullptr);
  triggerAndWait();
  EXPECT_EQ(firstCalls, 1);
  EXPECT_EQ(secondCalls, 1);
}

}  // namespace
}  // namespace fringix
