// What the library's own threads and its trace leave to the host: its signals, and its life when nobody reads what it writes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/debug_output.h"
#include "platform/event.h"
#include "platform/worker.h"

namespace fringix::test {

namespace {

std::int32_t readMask(void* mask) {
  pthread_sigmask(SIG_BLOCK, nullptr, static_cast<sigset_t*>(mask));
  return 0;
}

TEST(HostSignalsTest, AWorkerGetsItsOwnFaultsAndWhatRuntimesStopThreadsWithAndNothingElse) {
  sigset_t mask;
  platform::Worker worker;
  ASSERT_EQ(worker.start(readMask, &mask, nullptr), 0U);
  ASSERT_TRUE(worker.end(std::chrono::seconds(20)));
  for (const int sent : {SIGINT, SIGTERM, SIGPIPE, SIGCHLD, SIGUSR1}) EXPECT_EQ(sigismember(&mask, sent), 1) << sent;
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) EXPECT_EQ(sigismember(&mask, fault), 0) << fault;
  for (const int stop : {SIGPWR, SIGXCPU, SIGRTMIN, SIGRTMAX}) EXPECT_EQ(sigismember(&mask, stop), 0) << stop;
}

// Of the host's, whose handler does not have calls started again.
TEST(HostSignalsTest, ASignalDoesNotEndAWait) {
  static std::atomic<int> signals;
  signals = 0;
  struct sigaction noting = {};
  struct sigaction before = {};
  noting.sa_handler = [](int) { ++signals; };
  sigaction(SIGUSR1, &noting, &before);
  std::thread host([waiting = pthread_self()] {
    for (int i = 0; i < 5; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      pthread_kill(waiting, SIGUSR1);
    }
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(platform::ManualResetEvent().wait(std::chrono::milliseconds(200)));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  host.join();
  EXPECT_EQ(signals, 5);
  sigaction(SIGUSR1, &before, nullptr);
}

// Standard error as a pipe, for as long as it lives.
class PipedStandardError {
 public:
  PipedStandardError() : before_(dup(STDERR_FILENO)) {
    EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0);
    reading_ = open(("/proc/self/fd/" + std::to_string(ends_[0])).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    dup2(ends_[1], STDERR_FILENO);
    close(ends_[1]);
  }
  ~PipedStandardError() {
    dup2(before_, STDERR_FILENO);
    close(before_);
    closeReader();
  }
  PipedStandardError(const PipedStandardError&) = delete;
  PipedStandardError& operator=(const PipedStandardError&) = delete;

  void closeReader() {
    for (int* end : {&ends_[0], &reading_}) {
      if (*end >= 0) close(*end);
      *end = -1;
    }
  }

  std::string readSome(std::size_t atMost) {
    std::string text(atMost, '\0');
    const ssize_t size = read(reading_, text.data(), text.size());
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return text;
  }

  std::string readAll() {
    std::string all;
    for (std::string some = readSome(65536); !some.empty(); some = readSome(65536)) all += some;
    return all;
  }

 private:
  int before_;
  int reading_ = -1;
  int ends_[2] = {-1, -1};
};

TEST(HostSignalsTest, TracingToAReaderThatHasGoneHarmsNobody) {
  PipedStandardError piped;
  piped.closeReader();
  platform::writeDebugOutput("a line\r\n");
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

// Lines of several threads, of all lengths up to the longest; each line has one letter only.
void traceManyLines(int threads, int linesEach) {
  constexpr std::size_t longest = 4099;  // longer than what a pipe takes in one piece
  std::vector<std::thread> writers;
  for (int thread = 0; thread < threads; ++thread) {
    writers.emplace_back([=] {
      for (int line = 0; line < linesEach; ++line) {
        const std::size_t length = line % 2 == 0 ? longest : static_cast<std::size_t>(1 + 37 * line) % longest + 1;
        platform::writeDebugOutput((std::string(length, static_cast<char>('a' + thread)) + "\r\n").c_str());
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
}

// Every line is of one letter and ends; whether it is whole does not matter.
void expectUnmixedLines(const std::string& text) {
  std::size_t lines = 0;
  for (std::size_t start = 0; start < text.size(); ++lines) {
    const std::size_t end = text.find("\r\n", start);
    ASSERT_NE(end, std::string::npos) << "the last line has no end";
    const std::string_view line = std::string_view(text).substr(start, end - start);
    ASSERT_EQ(line.find_first_not_of(line.front()), std::string_view::npos) << "line " << lines << " is mixed with another";
    start = end + 2;
  }
  EXPECT_GT(lines, 0U);
}

constexpr int threads = 8;

// With a write that waits, this would never end; with a wait for each line it would take seconds.
TEST(HostSignalsTest, TracingToAReaderThatStandsStillGoesOn) {
  PipedStandardError piped;
  const auto start = std::chrono::steady_clock::now();
  traceManyLines(threads, 200);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
  const std::string read = piped.readAll();
  platform::writeDebugOutput("z\r\n");  // ends a line that was cut, if one was
  expectUnmixedLines(read + piped.readAll());
}

// Another program that writes to the same pipe fills it when nobody expects that.
TEST(HostSignalsTest, TracingBesideAnotherWriterGoesOn) {
  PipedStandardError piped;
  std::atomic<bool> over{false};
  std::thread other([&] {
    const int descriptor = open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    const std::string page(4096, '.');
    while (!over) static_cast<void>(write(descriptor, page.data(), page.size()) == 0);
    close(descriptor);
  });
  std::thread reader([&] {
    while (!over) piped.readSome(3000);
  });
  traceManyLines(threads, 100);
  piped.readSome(1 << 20);
  over = true;
  other.join();
  reader.join();
}

TEST(HostSignalsTest, LinesOfManyThreadsAreNotMixed) {
  PipedStandardError piped;
  std::atomic<bool> over{false};
  std::string read;
  std::thread reader([&] {  // too slow for all of it
    while (!over) {
      read += piped.readSome(5000);
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
  });
  traceManyLines(threads, 100);
  over = true;
  reader.join();
  read += piped.readAll();
  platform::writeDebugOutput("z\r\n");
  expectUnmixedLines(read + piped.readAll());
}

TEST(HostSignalsTest, TheLongestLineComesWhole) {
  PipedStandardError piped;
  const std::string line = std::string(4099, 'x') + "\r\n";
  platform::writeDebugOutput(line.c_str());
  EXPECT_EQ(piped.readAll(), line);
}

TEST(HostSignalsTest, TheModeOfStandardErrorStaysTheHosts) {
  const PipedStandardError piped;
  platform::writeDebugOutput("a line\r\n");
  EXPECT_EQ(fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK, 0);
}

}  // namespace

}  // namespace fringix::test
