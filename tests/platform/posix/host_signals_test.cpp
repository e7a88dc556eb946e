// What the library's own threads and its trace leave to the host: its signals, and its life when nobody reads what it writes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "platform/debug_output.h"
#include "platform/worker.h"

namespace fringix::test {

namespace {

std::int32_t readMask(void* mask) {
  pthread_sigmask(SIG_BLOCK, nullptr, static_cast<sigset_t*>(mask));
  return 0;
}

TEST(HostSignalsTest, AWorkerGetsItsOwnFaultsAndNothingThatIsSent) {
  sigset_t mask;
  platform::Worker worker;
  ASSERT_EQ(worker.start(readMask, &mask, nullptr), 0U);
  ASSERT_TRUE(worker.end(std::chrono::seconds(20)));
  for (const int sent : {SIGINT, SIGTERM, SIGPIPE, SIGCHLD, SIGUSR1}) EXPECT_EQ(sigismember(&mask, sent), 1) << sent;
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) EXPECT_EQ(sigismember(&mask, fault), 0) << fault;
}

// Standard error as a pipe, for as long as it lives.
class PipedStandardError {
 public:
  PipedStandardError() : before_(dup(STDERR_FILENO)) {
    EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0);
    dup2(ends_[1], STDERR_FILENO);
    close(ends_[1]);
  }
  ~PipedStandardError() {
    dup2(before_, STDERR_FILENO);
    close(before_);
    if (ends_[0] >= 0) close(ends_[0]);
  }
  PipedStandardError(const PipedStandardError&) = delete;
  PipedStandardError& operator=(const PipedStandardError&) = delete;

  void closeReader() {
    close(ends_[0]);
    ends_[0] = -1;
  }
  int size() const { return fcntl(ends_[0], F_GETPIPE_SZ); }

 private:
  int before_;
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

// With a write that waits, this would never end.
TEST(HostSignalsTest, TracingToAReaderThatStandsStillGoesOn) {
  const PipedStandardError piped;
  const std::string line = std::string(4000, 'x') + "\r\n";
  for (int written = 0; written <= 2 * piped.size(); written += static_cast<int>(line.size())) platform::writeDebugOutput(line.c_str());
}

}  // namespace

}  // namespace fringix::test
