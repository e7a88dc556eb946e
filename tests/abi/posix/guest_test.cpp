// What a session leaves of its host's process: all as it was.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "abi/greeting_head.h"
#include "fringix/fringix.h"
#include "support/process_state.h"

namespace fringix::test {

namespace {

class Session {
 public:
  explicit Session(const Script& script = greetingHead()) : head_(script) { EXPECT_EQ(SLDevAlloc("127.0.0.1", &handle_), SLALL_OKAY); }
  ~Session() { EXPECT_EQ(SLDevFree(handle_), SLALL_OKAY); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  int gain() const {
    std::int32_t gain = -1;
    EXPECT_EQ(SLGetGain(handle_, &gain), SLALL_OKAY);
    return gain;
  }

 private:
  ScriptedHead head_;
  int handle_ = -1;
};

// What belongs to the host, as text.
std::string stateOfTheHost() {
  std::string state = std::string(std::setlocale(LC_ALL, nullptr)) + std::filesystem::current_path().string();
  for (char** variable = environ; *variable != nullptr; ++variable) state += std::string("\n") + *variable;
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0) continue;
    state += "\nsignal " + std::to_string(signal) + ": " + std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_sigaction));
  }
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  for (int signal = 1; signal < NSIG; ++signal) state += sigismember(&blocked, signal) == 1 ? '1' : '0';
  const mode_t mask = umask(0);
  umask(mask);
  return state + std::to_string(mask);
}

TEST(GuestTest, LeavesSignalsLocaleEnvironmentAndFoldersToItsHost) {
  const std::string before = stateOfTheHost();
  {
    const Session session;
    EXPECT_EQ(session.gain(), gainOfTheHead);
    EXPECT_EQ(stateOfTheHost(), before);
  }
  EXPECT_EQ(stateOfTheHost(), before);
}

TEST(GuestTest, HasNoThreadAndNoFileBeforeTheFirstSessionAndNoneAfterTheLast) {
  const std::size_t threads = threadCount();
  const std::size_t descriptors = descriptorCount();
  std::int32_t count = 0;
  SLSetDebugFlag(0);
  EXPECT_EQ(SLGetDeviceKeyListSize(&count), SLALL_OKAY);
  EXPECT_EQ(threadCount(), threads);
  EXPECT_EQ(descriptorCount(), descriptors);
  { const Session session; }
  EXPECT_EQ(threadCount(), threads);
  EXPECT_EQ(descriptorCount(), descriptors);
}

// The descriptors that a program started now would inherit.
std::set<int> inherited() {
  std::set<int> all;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int descriptor = std::stoi(entry.path().filename());
    const int flags = fcntl(descriptor, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0) all.insert(descriptor);
  }
  return all;
}

TEST(GuestTest, LeavesNoFileToProgramsThatItsHostStarts) {
  const std::set<int> before = inherited();
  const Session session;
  EXPECT_EQ(inherited(), before);
}

TEST(GuestTest, NeedsNoLowDescriptor) {
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit more{before.rlim_max, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &more);
  std::vector<int> taken(2000);
  for (int& descriptor : taken) descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
  ASSERT_GT(taken.back(), 1999) << "the system grants this process too few";
  {
    const Session session;
    std::int32_t count = 0;
    EXPECT_EQ(session.gain(), gainOfTheHead);
    EXPECT_EQ(SLGetDeviceKeyListSize(&count), SLALL_OKAY);
  }
  for (const int descriptor : taken) close(descriptor);
  setrlimit(RLIMIT_NOFILE, &before);
}

// How often the threads but the calling one have waited so far, and how many there are.
struct Waits {
  std::size_t threads = 0;
  int all = 0;
};

Waits waits() {
  Waits waits;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (task.path().filename() == std::to_string(gettid())) continue;
    ++waits.threads;
    std::ifstream status(task.path() / "status");
    int count = 0;
    for (std::string word; status >> word;) {
      if (word == "voluntary_ctxt_switches:") status >> count;
    }
    waits.all += count;
  }
  return waits;
}

// The heartbeat looks around every 15 seconds; when it sends something, the head wakes, too.
TEST(GuestInRealTimeTest, WakesEvery15SecondsOnlyWhileItsSessionIsIdle) {
  const Session session(silentHead());
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // its threads have found their places
  const Waits before = waits();
  EXPECT_EQ(before.threads, 3U) << "the two of the session, and the head's";
  std::this_thread::sleep_for(std::chrono::seconds(20));
  const Waits after = waits();
  EXPECT_EQ(after.threads, before.threads);
  EXPECT_LE(after.all - before.all, 3);
}

}  // namespace

}  // namespace fringix::test
