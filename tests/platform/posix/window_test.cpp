// Windows of a host without a window system: descriptors, to which a post writes one record.
#include "platform/window.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <future>
#include <stdexcept>
#include <vector>

#include "platform/socket.h"

namespace fringix::platform {

namespace {

using Record = std::array<unsigned char, 24>;

constexpr std::chrono::seconds patience{10};

WindowHandle windowOf(int descriptor) { return reinterpret_cast<WindowHandle>(static_cast<std::intptr_t>(descriptor)); }

// Two ends of a pipe or a connection, kept as sockets: what both need is to be closed. Both block, as a host's may.
struct Ends {
  Socket reading;
  Socket writing;

  static Ends ofAPipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return {Socket(ends[0]), Socket(ends[1])};
  }
  static Ends ofAConnection(int type) {
    int ends[2];
    if (socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends) != 0) throw std::runtime_error("no connection");
    return {Socket(ends[0]), Socket(ends[1])};
  }

  bool readable() const {
    pollfd entry{reading.handle(), POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
  }
  std::size_t readAll() const {
    std::vector<char> buffer(65536);
    std::size_t size = 0;
    while (readable()) {
      const ssize_t count = read(reading.handle(), buffer.data(), buffer.size());
      if (count <= 0) break;
      size += static_cast<std::size_t>(count);
    }
    return size;
  }
  std::size_t fill() const {
    const int flags = fcntl(writing.handle(), F_GETFL);
    fcntl(writing.handle(), F_SETFL, flags | O_NONBLOCK);
    const std::vector<char> filling(512);
    std::size_t size = 0;
    for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(count > 0 ? count : 0)) {
      count = write(writing.handle(), filling.data(), filling.size());
    }
    fcntl(writing.handle(), F_SETFL, flags);
    return size;
  }
};

struct Kind {
  const char* name;
  Ends (*open)();
};

std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.name; }

class WindowTest : public testing::TestWithParam<Kind> {
 protected:
  // Posts in a thread of its own; whether that returned without being waited for.
  static bool postsWithoutWaiting(const Window& window, const Ends& ends) {
    auto posted = std::async(std::launch::async, [&] { window.post(1, 2, 3); });
    const bool returned = posted.wait_for(patience) == std::future_status::ready;
    if (!returned) ends.readAll();
    return returned;
  }

  Ends ends_ = GetParam().open();
  Window window_{windowOf(ends_.writing.handle())};
};

TEST_P(WindowTest, APostIsOneRecord) {
  window_.post(0x81828384, 0x9192939495969798, -2);
  Record record{};
  ASSERT_EQ(read(ends_.reading.handle(), record.data(), record.size()), static_cast<ssize_t>(record.size()));
  EXPECT_FALSE(ends_.readable());
  std::array<std::uint32_t, 2> first{};
  std::array<std::int64_t, 2> rest{};
  std::memcpy(first.data(), record.data(), 8);
  std::memcpy(rest.data(), record.data() + 8, 16);
  EXPECT_EQ(first[0], 0x81828384U);
  EXPECT_EQ(first[1], 0U) << "reserved";
  EXPECT_EQ(static_cast<std::uint64_t>(rest[0]), 0x9192939495969798U);
  EXPECT_EQ(rest[1], -2);
}

TEST_P(WindowTest, OneThatIsFullLosesThePostAndBlocksNobody) {
  const std::size_t filled = ends_.fill();
  EXPECT_TRUE(postsWithoutWaiting(window_, ends_));
  EXPECT_EQ(ends_.readAll(), filled);
  window_.post(1, 2, 3);
  EXPECT_EQ(ends_.readAll(), sizeof(Record)) << "the next one finds room";
}

std::atomic<int> signals{0};

TEST_P(WindowTest, OneThatNobodyReadsRaisesNoSignal) {
  signals = 0;
  struct sigaction counting {};
  struct sigaction before {};
  counting.sa_handler = [](int) { ++signals; };
  sigaction(SIGPIPE, &counting, &before);
  ends_.reading.close();
  window_.post(1, 2, 3);
  sigaction(SIGPIPE, &before, nullptr);
  EXPECT_EQ(signals, 0);
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST_P(WindowTest, OneThatHasBecomeAnotherFileGetsNothing) {
  const Ends other = GetParam().open();
  ASSERT_EQ(dup2(other.writing.handle(), ends_.writing.handle()), ends_.writing.handle());
  window_.post(1, 2, 3);
  EXPECT_FALSE(other.readable());
  Window(windowOf(ends_.writing.handle())).post(1, 2, 3);
  EXPECT_EQ(other.readAll(), sizeof(Record)) << "it can be registered as what it is now";
}

TEST_P(WindowTest, OneThatIsClosedGetsNothing) {
  const int closed = ends_.writing.handle();
  ends_.writing.close();
  window_.post(1, 2, 3);
  EXPECT_EQ(fcntl(closed, F_GETFD), -1);
  EXPECT_EQ(ends_.readAll(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Descriptors, WindowTest,
                         testing::Values(Kind{"Pipe", [] { return Ends::ofAPipe(); }},
                                         Kind{"Stream", [] { return Ends::ofAConnection(SOCK_STREAM); }},
                                         Kind{"Datagrams", [] { return Ends::ofAConnection(SOCK_DGRAM); }}),
                         [](const auto& test) { return test.param.name; });

// Null is what the number of the first descriptor looks like.
TEST(NoWindowTest, NullGetsNothingWhateverTheFirstDescriptorIs) {
  for (const auto open : {+[] { return Ends::ofAPipe(); }, +[] { return Ends::ofAConnection(SOCK_STREAM); }}) {
    const Ends ends = open();
    const Socket before(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3));
    ASSERT_EQ(dup2(ends.writing.handle(), STDIN_FILENO), STDIN_FILENO);
    Window(nullptr).post(1, 2, 3);
    EXPECT_FALSE(ends.readable());
    Window().post(1, 2, 3);
    EXPECT_FALSE(ends.readable());
    if (before.valid()) {
      dup2(before.handle(), STDIN_FILENO);
    } else {
      close(STDIN_FILENO);
    }
  }
}

TEST(NoWindowTest, AFileGetsNothing) {
  char path[] = "/tmp/fringix-window-XXXXXX";
  const Socket file(mkstemp(path));
  ASSERT_TRUE(file.valid());
  unlink(path);
  Window(windowOf(file.handle())).post(1, 2, 3);
  EXPECT_EQ(lseek(file.handle(), 0, SEEK_END), 0);
}

}  // namespace

}  // namespace fringix::platform
