// A child that is forked, and runs no other program, while its parent's threads are anywhere in the library.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

#include "support/captured_trace.h"
#include "support/sanitizers.h"
#include "threads/raised_triggers.h"

namespace fringix::test {

namespace {

constexpr unsigned secondsOfAChild = 20;
constexpr int wrong = 3;

// A child that ends with what `body` gives, or is ended when it hangs.
class Child {
 public:
  template <class Body>
  explicit Child(Body body) : process_(fork()) {
    if (process_ != 0) return;
    alarm(secondsOfAChild);
    _exit(body());
  }
  ~Child() { result(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  int result() {
    int status = 0;
    if (waitpid(process_, &status, 0) == process_) result_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result_;
  }

 private:
  pid_t process_;
  int result_ = -1;
};

// A child that does nothing until the test has looked around.
class IdleChild {
 public:
  IdleChild()
      : made_(pipe(ends_)), child_([this] {
          close(ends_[1]);
          char byte = 0;
          return read(ends_[0], &byte, 1) == 0 ? 0 : wrong;
        }) {}
  ~IdleChild() { end(); }

  int end() {
    if (std::exchange(made_, -1) == 0) {
      close(ends_[1]);
      close(ends_[0]);
    }
    return child_.result();
  }

 private:
  int ends_[2];
  int made_;
  Child child_;
};

class ForkedChildTest : public TriggerTest {};

TEST_F(ForkedChildTest, KnowsNoHandleOfItsParentAndLeavesItsSessionsAlone) {
  OpenSession session({expect(text("56MSG_SLGetGain")), reply(integer(17))});
  const int handle = session.handle();
  EXPECT_EQ(Child([handle] {
              std::uint32_t width = 0;
              const bool unknown =
                  SLGetCameraSize(handle, &width, &width) == SLUNKNOWN_DEVICE_ID && SLDevFree(handle) == SLUNKNOWN_DEVICE_ID;
              return unknown ? 0 : wrong;
            }).result(),
            0);
  std::int32_t gain = 0;
  EXPECT_EQ(SLGetGain(handle, &gain), SLALL_OKAY);
  EXPECT_EQ(session.sent(), text("56MSG_SLGetGain"));
}

// Locks are held by one thread for long, by others again and again.
class BusyParent {
 public:
  BusyParent() {
    SLSetDebugFlag(1);
    threads_.emplace_back([this] { SLGetGain(session_.handle(), &gain_); });
    for (int i = 0; i < 2; ++i) {
      threads_.emplace_back([this] {
        while (!over_) SLGetCameraSize(session_.handle(), nullptr, nullptr);
      });
    }
  }
  ~BusyParent() {
    over_ = true;
    session_.awaitEndOfScript();
    for (std::thread& thread : threads_) thread.join();
    SLSetDebugFlag(0);
  }

  int handle() const { return session_.handle(); }

 private:
  CapturedTrace trace_;
  OpenSession session_{{expect(text("56MSG_SLGetGain")), standStill(), cut()}};
  std::int32_t gain_ = 0;
  std::atomic<bool> over_{false};
  std::vector<std::thread> threads_;
};

TEST_F(ForkedChildTest, WaitsForNoThreadOfItsParent) {
  const BusyParent parent;
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(Child([&] {
                DeviceKeyEntry entry{};
                const bool freed = SLDevFree(parent.handle()) != SLUNKNOWN_DEVICE_ID;
                return !freed && SLGetDeviceKeyListEntry(0, &entry) == SLBAD_PARAMETER ? 0 : wrong;
              }).result(),
              0);
  }
}

TEST_F(ForkedChildTest, CanOpenASessionOfItsOwn) {
  if (builtWithSanitizers) GTEST_SKIP() << "a sanitizer takes no new threads in a forked child";
  OpenSession session(Script{});
  ScriptedHead head(handshake(), "127.0.0.2");
  EXPECT_EQ(Child([&] {
              int handle = -1;
              if (SLDevAlloc("127.0.0.2", &handle) != SLALL_OKAY || handle == session.handle()) return wrong;
              return SLDevFree(handle) == SLALL_OKAY ? 0 : wrong;
            }).result(),
            0);
  EXPECT_EQ(readable(head.received()), readable(handshakeBytes() + text("ByeBye=")));
}

TEST_F(ForkedChildTest, KeepsNoConnectionOfItsParentOpen) {
  OpenSession session(Script{});
  IdleChild child;
  EXPECT_EQ(session.free(), SLALL_OKAY);
  EXPECT_EQ(readable(session.sent()), "");  // the head has seen the end
  EXPECT_EQ(child.end(), 0);
}

TEST_F(ForkedChildTest, KeepsTheTriggerPortFromNobody) {
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  IdleChild child;
  EXPECT_EQ(session.free(), SLALL_OKAY);
  platform::Socket port = platform::Socket::openDatagram();
  EXPECT_TRUE(port.bind({0, triggerPort}));
  EXPECT_EQ(child.end(), 0);
}

std::atomic<pid_t> forkedInCallback{0};

TEST_F(ForkedChildTest, ThatReturnsFromACallbackEnds) {
  OpenSession session(tellsItsSerial());
  SLRegisterEventhandler(session.handle(), noteEvent, &journal_);
  awaitListener(journal_);
  SLRegisterGPIOCallback(session.handle(), [](void*) {
    if (forkedInCallback != 0) return;
    const pid_t child = fork();
    if (child == 0) alarm(secondsOfAChild);
    if (child != 0) forkedInCallback = child;
  });
  sendFrom(thisHost, trigger);
  ASSERT_TRUE(eventually([] { return forkedInCallback != 0; }));
  int status = -1;
  ASSERT_EQ(waitpid(forkedInCallback, &status, 0), forkedInCallback);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(awaited(journal_, 1), oneEvent) << "the parent has gone on";
}

}  // namespace

}  // namespace fringix::test
