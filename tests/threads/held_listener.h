// A listener that stays in its triggers until it is let go.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/eventually.h"
#include "threads/gpio_thread.h"

namespace fringix::test {

class HeldListener final : public GPIOThread, public TriggerCallbackClass {
 public:
  static constexpr std::chrono::seconds patience{20};

  HeldListener() { setOwner(this); }
  ~HeldListener() override {
    leave.set();
    Stop();
  }

  std::int32_t ThreadProc() override {
    result = GPIOThread::ThreadProc();
    ended = true;
    return result;
  }

  void OnTrigger() override {
    ++triggers;
    entered.set();
    leave.wait(patience);
  }
  int Init(std::unique_ptr<CommandChannel>) override { return 0; }

  // Asks it to stop while it is held, and then lets it go.
  void stopWhileHeld() {
    std::thread stopping([&] { EXPECT_EQ(Stop(), 0); });
    EXPECT_TRUE(eventually([&] { return stopEvent().wait(std::chrono::milliseconds(0)); }));
    leave.set();
    stopping.join();
  }

  platform::ManualResetEvent entered;
  platform::ManualResetEvent leave;
  std::atomic<int> triggers{0};
  std::atomic<std::int32_t> result{1};
  std::atomic<bool> ended{false};
};

}  // namespace fringix::test
