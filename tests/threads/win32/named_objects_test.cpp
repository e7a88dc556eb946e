// The objects that all processes of a host share, used by their names as another program would.
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <thread>

#include "diagnosis/trace.h"
#include "platform/datagram.h"
#include "support/captured_trace.h"
#include "support/eventually.h"
#include "threads/held_listener.h"

namespace fringix::test {

namespace {

constexpr const char* blockName = "5CD4232B-DC80-424a-9B46-B85B97F28D95";
constexpr const char* lockName = "C5128585-87BE-4b48-9F65-9A4CAC572E59";
constexpr const char* notificationName = "01C8BBBF-2F08-43b6-A986-6EE1CA79A1BE";
constexpr std::size_t blockSize = 64;
constexpr std::uint32_t head = 0x7F000009;

using Lines = std::vector<std::string>;

std::string line(const std::string& message) { return "<QOR> " + message + "\r\n"; }

struct CountingOwner final : TriggerCallbackClass {
  void OnTrigger() override { ++triggers; }
  int Init(std::unique_ptr<CommandChannel>) override { return 0; }
  std::atomic<int> triggers{0};
};

// The objects, as a program has them that knows nothing but their names.
struct Stranger {
  HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, blockSize, blockName);
  unsigned char* block = static_cast<unsigned char*>(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, blockSize));
  HANDLE lock = CreateMutexA(nullptr, FALSE, lockName);
  HANDLE notification = CreateEventA(nullptr, TRUE, FALSE, notificationName);

  ~Stranger() {
    CloseHandle(notification);
    CloseHandle(lock);
    UnmapViewOfFile(block);
    CloseHandle(mapping);
  }
};

// An object of whatever kind.
struct Object {
  HANDLE handle;
  ~Object() { CloseHandle(handle); }
};

class NamedObjectsTest : public testing::Test {
 protected:
  // What a listener writes that cannot begin.
  Lines linesOfAFailure(std::int32_t result) {
    HeldListener listener;
    CapturedTrace capture;
    setDebugFlag(1);
    listener.Start("127.0.0.9");
    EXPECT_TRUE(eventually([&] { return listener.ended.load(); }));
    setDebugFlag(0);
    EXPECT_EQ(listener.result, result);
    return capture.lines();
  }

  // The lines of a follower that has been asked to stop, and that `also` happens to, while it is busy with a trigger that does not end.
  Lines linesAfterAHeldTrigger(Stranger& stranger, const std::function<void()>& also) {
    HeldListener listener;
    CapturedTrace capture;
    setDebugFlag(1);
    listener.Start("127.0.0.9");
    std::memcpy(stranger.block, &head, sizeof head);
    SetEvent(stranger.notification);
    EXPECT_TRUE(listener.entered.wait(HeldListener::patience));
    also();
    listener.stopWhileHeld();
    setDebugFlag(0);
    ResetEvent(stranger.notification);
    EXPECT_EQ(listener.triggers, 1);
    return capture.lines();
  }
};

TEST_F(NamedObjectsTest, ABlockOfAnotherKindEndsTheListenerWithoutAFailureCode) {
  const Object event{CreateEventA(nullptr, TRUE, FALSE, blockName)};
  EXPECT_EQ(linesOfAFailure(0), (Lines{line("GPIOThread: ThreadProc started"), line("Could not create file mapping object (6)."),
                                       line("GPIOThread: Cannot access shared memory")}));
}

TEST_F(NamedObjectsTest, ALockOfAnotherKindEndsTheListener) {
  const Object event{CreateEventA(nullptr, TRUE, FALSE, lockName)};
  EXPECT_EQ(linesOfAFailure(-1), (Lines{line("GPIOThread: ThreadProc started"), line("ERROR: CreateMutex for udpmutex failed")}));
}

TEST_F(NamedObjectsTest, ANotificationOfAnotherKindEndsTheListener) {
  const Object mutex{CreateMutexA(nullptr, FALSE, notificationName)};
  EXPECT_EQ(linesOfAFailure(-1), (Lines{line("GPIOThread: ThreadProc started"), line("ERROR: CreateEvent for gpio_event failed")}));
}

TEST_F(NamedObjectsTest, ACallbackThatThrowsEndsTheAnnouncement) {
  Stranger stranger;
  const platform::SocketLibrary library;
  GPIOThread listener;
  static std::atomic<int> calls;
  calls = 0;
  listener.setGpioCallback([](void*) {
    ++calls;
    throw std::runtime_error("the callback's");
  });
  listener.Start("127.0.0.1");
  constexpr std::uint32_t thisHost = 0x7F000001;
  EXPECT_TRUE(eventually([&] {
    platform::sendDatagram(thisHost, {thisHost, 44331}, "02UDP_GPIO", 10);
    return eventually([&] { return calls > 0; }, std::chrono::milliseconds(100));
  }));
  EXPECT_EQ(WaitForSingleObject(stranger.lock, 20000), WAIT_OBJECT_0) << "the listener has ended";
  EXPECT_EQ(WaitForSingleObject(stranger.notification, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "followers would go on for ever";
  ReleaseMutex(stranger.lock);
}

TEST_F(NamedObjectsTest, AFollowerStopsBeforeItTakesAnotherTrigger) {
  Stranger stranger;
  ASSERT_EQ(WaitForSingleObject(stranger.lock, 0), WAIT_OBJECT_0);
  EXPECT_EQ(linesAfterAHeldTrigger(stranger, [] {}),
            (Lines{line("GPIOThread: ThreadProc started"), line("GPIOThread: returning from ThreadProc")}));
  ReleaseMutex(stranger.lock);
}

TEST_F(NamedObjectsTest, APortThatAStrangerHoldsEndsTheListener) {
  const platform::SocketLibrary library;
  platform::Socket stranger = platform::Socket::openDatagram();
  stranger.setSoleListener();
  ASSERT_TRUE(stranger.setReuseAddress(false));
  ASSERT_TRUE(stranger.bind({0, 44331}));
  EXPECT_EQ(linesOfAFailure(-1), (Lines{line("GPIOThread: ThreadProc started"), line("ERROR: openPort for GPIO-socket failed")}));
}

// The port is taken, so that a receiver says that it is one.
TEST_F(NamedObjectsTest, AFollowerBecomesTheReceiverBeforeItStops) {
  const platform::SocketLibrary library;
  platform::Socket owner = platform::Socket::openDatagram();
  owner.setSoleListener();
  ASSERT_TRUE(owner.setReuseAddress(false));
  ASSERT_TRUE(owner.bind({0, 44331}));
  Stranger stranger;
  ASSERT_EQ(WaitForSingleObject(stranger.lock, 0), WAIT_OBJECT_0);
  EXPECT_EQ(linesAfterAHeldTrigger(stranger, [&] { ReleaseMutex(stranger.lock); }),
            (Lines{line("GPIOThread: ThreadProc started"), line("ERROR: openPort for GPIO-socket failed")}));
}

TEST_F(NamedObjectsTest, AListenerFollowsAReceiverThatIsNotOurs) {
  Stranger stranger;
  ASSERT_EQ(WaitForSingleObject(stranger.lock, 0), WAIT_OBJECT_0);
  CountingOwner owner;
  GPIOThread listener;
  listener.setOwner(&owner);
  listener.Start("127.0.0.9");
  std::memcpy(stranger.block, &head, sizeof head);
  SetEvent(stranger.notification);
  EXPECT_TRUE(eventually([&] { return owner.triggers > 1; })) << "as often as it is found signalled; kept on purpose";
  ResetEvent(stranger.notification);
  EXPECT_EQ(listener.Stop(), 0);
  ReleaseMutex(stranger.lock);
}

TEST_F(NamedObjectsTest, AReceiverWritesTheSenderAndSignals) {
  Stranger stranger;
  std::memset(stranger.block, 0, blockSize);
  struct Owner final : TriggerCallbackClass {
    explicit Owner(HANDLE notification) : signal(notification) {}
    void OnTrigger() override { signalled = WaitForSingleObject(signal, 0) == WAIT_OBJECT_0; }
    int Init(std::unique_ptr<CommandChannel>) override { return 0; }
    HANDLE signal;
    std::atomic<bool> signalled{false};
  } owner(stranger.notification);
  GPIOThread listener;
  listener.setOwner(&owner);
  listener.Start("127.0.0.1");
  const platform::SocketLibrary library;
  platform::Socket socket = platform::Socket::openDatagram();
  ASSERT_TRUE(eventually([&] {
    socket.sendTo("02UDP_GPIO", 10, {0x7F000001, 44331});
    return eventually([&] { return owner.signalled.load(); }, std::chrono::milliseconds(100));
  }));
  EXPECT_EQ(WaitForSingleObject(stranger.lock, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "held by the receiver";
  EXPECT_EQ(listener.Stop(), 0);
  EXPECT_EQ(WaitForSingleObject(stranger.notification, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "signalled during the dispatch only";
  EXPECT_EQ(WaitForSingleObject(stranger.lock, 0), WAIT_OBJECT_0) << "released by the receiver";
  ReleaseMutex(stranger.lock);
  std::uint32_t sender = 0;
  std::memcpy(&sender, stranger.block, sizeof sender);
  EXPECT_EQ(sender, 0x7F000001U);
  for (std::size_t i = sizeof sender; i < blockSize; ++i) EXPECT_EQ(stranger.block[i], 0) << "reserved";
}

TEST_F(NamedObjectsTest, AnAbandonedLockEndsTheFollowers) {
  Stranger stranger;
  platform::ManualResetEvent taken;
  platform::ManualResetEvent leave;
  std::thread holder([&] {
    WaitForSingleObject(stranger.lock, INFINITE);
    taken.set();
    leave.wait(std::chrono::seconds(20));  // and ends without releasing it
  });
  taken.wait(std::chrono::seconds(20));
  GPIOThread follower;
  std::atomic<std::int32_t> result{1};
  CapturedTrace capture;
  setDebugFlag(1);
  std::thread following([&] { result = follower.ThreadProc(); });
  leave.set();
  holder.join();
  EXPECT_TRUE(eventually([&] { return result == -1; }));
  following.join();
  setDebugFlag(0);
  EXPECT_EQ(capture.lines(), (Lines{line("GPIOThread: ThreadProc started"), line("ERROR: WaitForMultipleObjects in GPIO_Thread failed")}));
}

}  // namespace

}  // namespace fringix::test
