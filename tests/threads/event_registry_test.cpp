// Event handlers and event windows: who is called, in which order, and what handlers may do.
#include "threads/event_registry.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/test_window.h"

namespace fringix::test {

namespace {

constexpr std::uint32_t message = 0x8000 + 7;

using Calls = std::vector<std::string>;

// A context that notes its calls.
struct Listener {
  Calls& calls;
  std::string name;
  std::function<void()> also = [] {};
};

void note(std::int32_t event, void* context, std::int64_t parameter) {
  auto& listener = *static_cast<Listener*>(context);
  listener.calls.push_back(listener.name + std::to_string(event) + ":" + std::to_string(parameter));
  listener.also();
}

void noteOtherwise(std::int32_t event, void* context, std::int64_t parameter) {
  note(event, context, parameter);
  static_cast<Listener*>(context)->calls.back() += "!";
}

class EventRegistryTest : public testing::Test {
 protected:
  Calls fired(std::int32_t event = 1, std::int64_t parameter = 5) {
    calls_.clear();
    registry_.FireEvent(event, parameter);
    return calls_;
  }

  EventRegistry registry_;
  Calls calls_;
  Listener a_{calls_, "a"};
  Listener b_{calls_, "b"};
  Listener c_{calls_, "c"};
};

TEST_F(EventRegistryTest, CallsHandlersInTheOrderOfRegistration) {
  registry_.addHandler(note, &b_);
  registry_.addHandler(note, &a_);
  registry_.addHandler(noteOtherwise, &b_);
  EXPECT_EQ(fired(0, -70123), (Calls{"b0:-70123", "a0:-70123", "b0:-70123!"}));
}

TEST_F(EventRegistryTest, APairStandsOnce) {
  registry_.addHandler(note, &a_);
  registry_.addHandler(note, &a_);
  EXPECT_EQ(fired(), Calls{"a1:5"});
  registry_.removeHandler(note, &a_);
  EXPECT_EQ(fired(), Calls{});
}

TEST_F(EventRegistryTest, RemovingClosesTheGapAndKeepsTheOrder) {
  for (Listener* listener : {&a_, &b_, &c_}) registry_.addHandler(note, listener);
  registry_.removeHandler(note, &b_);
  registry_.removeHandler(noteOtherwise, &a_);
  EXPECT_EQ(fired(), (Calls{"a1:5", "c1:5"}));
}

TEST_F(EventRegistryTest, HandlersComeBeforeWindows) {
  TestWindow window;
  std::vector<Post> during;
  a_.also = [&] { during = window.posts(); };
  registry_.addWindow(window.handle(), message);
  registry_.addHandler(note, &a_);
  fired(1, -5);
  EXPECT_EQ(during, std::vector<Post>{});
  EXPECT_EQ(window.posts(), (std::vector<Post>{{message, 1, -5}}));
}

TEST_F(EventRegistryTest, AWindowIsKnownByHandleAndMessage) {
  TestWindow window;
  registry_.addWindow(window.handle(), message);
  registry_.addWindow(window.handle(), message + 1);
  registry_.addWindow(window.handle(), message);
  fired(0, 9);
  EXPECT_EQ(window.posts(), (std::vector<Post>{{message, 0, 9}, {message + 1, 0, 9}}));
  registry_.removeWindow(window.handle(), message);
  registry_.removeWindow(nullptr, message + 1);
  fired(0, 9);
  EXPECT_EQ(window.posts(), (std::vector<Post>{{message + 1, 0, 9}}));
}

TEST_F(EventRegistryTest, AWindowThatIsGoneIsPassedOver) {
  TestWindow gone;
  TestWindow there;
  registry_.addWindow(gone.handle(), message);
  registry_.addWindow(there.handle(), message);
  gone.destroy();
  fired();
  EXPECT_EQ(there.posts(), (std::vector<Post>{{message, 1, 5}}));
}

TEST_F(EventRegistryTest, NoWindowAtAllIsPassedOver) {
  registry_.addWindow(nullptr, message);
  EXPECT_EQ(fired(), Calls{});
}

TEST_F(EventRegistryTest, ANullHandlerIsPassedOver) {
  registry_.addHandler(nullptr, &a_);
  registry_.addHandler(note, &b_);
  EXPECT_EQ(fired(), Calls{"b1:5"});
}

TEST_F(EventRegistryTest, AHandlerMayRemoveItselfAndAddOthers) {
  a_.also = [&] {
    registry_.removeHandler(note, &a_);
    registry_.addHandler(note, &c_);
  };
  registry_.addHandler(note, &a_);
  registry_.addHandler(note, &b_);
  EXPECT_EQ(fired(), (Calls{"a1:5", "b1:5", "c1:5"}));
  EXPECT_EQ(fired(), (Calls{"b1:5", "c1:5"}));
}

TEST_F(EventRegistryTest, AHandlerMayRemoveOneThatIsYetToCome) {
  a_.also = [&] { registry_.removeHandler(note, &b_); };
  for (Listener* listener : {&a_, &b_, &c_}) registry_.addHandler(note, listener);
  EXPECT_EQ(fired(), (Calls{"a1:5", "c1:5"}));
}

TEST_F(EventRegistryTest, AHandlerMayFireAnEventItself) {
  bool nested = false;
  a_.also = [&] {
    if (!std::exchange(nested, true)) registry_.FireEvent(0, 6);
  };
  registry_.addHandler(note, &a_);
  registry_.addHandler(note, &b_);
  EXPECT_EQ(fired(), (Calls{"a1:5", "a0:6", "b0:6", "b1:5"}));
}

TEST_F(EventRegistryTest, AHandlerMayRemoveItselfInAnEventInsideAnEvent) {
  bool nested = false;
  a_.also = [&] {
    if (!std::exchange(nested, true)) registry_.FireEvent(0, 6);
  };
  b_.also = [&] { registry_.removeHandler(note, &b_); };
  for (Listener* listener : {&a_, &b_, &c_}) registry_.addHandler(note, listener);
  EXPECT_EQ(fired(), (Calls{"a1:5", "a0:6", "b0:6", "c0:6", "c1:5"}));
}

TEST_F(EventRegistryTest, AThrowingHandlerLeavesTheLockFree) {
  a_.also = [] { throw std::runtime_error("the handler's"); };
  registry_.addHandler(note, &a_);
  EXPECT_THROW(registry_.FireEvent(1, 5), std::runtime_error);
  std::thread([&] { registry_.removeHandler(note, &a_); }).join();
  registry_.addHandler(note, &b_);
  EXPECT_EQ(fired(), Calls{"b1:5"});
}

}  // namespace

}  // namespace fringix::test
