// Connections in which a stranger has left something, as they are where the system cannot keep descriptors out.
#include "platform/posix/local_name.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <utility>
#include <vector>

#include "support/eventually.h"
#include "support/process_state.h"

namespace fringix::platform {

namespace {

// Whoever closes `near` last waits for a minute, or until the other end is reset.
struct LingeringConnection {
  Socket near = Socket::openStream();
  Socket far;

  LingeringConnection() {
    Socket listener = Socket::openStream();
    EXPECT_TRUE(listener.bind({0x7F000001, 0}) && listener.listen(1) && near.connect(listener.localEndpoint()));
    far = listener.accept();
    far.setResetOnClose();
    near.setNonBlocking(true);
    const std::vector<char> filling(65536);
    while (near.send(filling.data(), filling.size()) > 0) {
    }
    const linger minute{1, 60};
    setsockopt(near.handle(), SOL_SOCKET, SO_LINGER, &minute, sizeof minute);
  }
};

std::pair<Socket, Socket> openPair() {
  std::array<int, 2> ends{};
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  return {Socket(ends[0]), Socket(ends[1])};
}

TEST(ReceivedDescriptorTest, IsTakenFromAByteThatCarriesIt) {
  auto [near, far] = openPair();
  EXPECT_FALSE(receiveDescriptor(near).valid()) << "nothing has come";
  ASSERT_EQ(far.send("x", 1), 1);
  EXPECT_FALSE(receiveDescriptor(near).valid()) << "a byte by itself";
  ASSERT_TRUE(sendDescriptor(far, near));
  const Socket taken = receiveDescriptor(near);
  ASSERT_TRUE(taken.valid());
  EXPECT_NE(fcntl(taken.handle(), F_GETFD) & FD_CLOEXEC, 0);
}

class LocalNameTest : public testing::Test {
 protected:
  // Leaves a descriptor that lingers in a connection and has that closed.
  void closeWithSomethingLeft() {
    LingeringConnection& lingering = lingering_.emplace_back();
    auto [ours, theirs] = openPair();
    ASSERT_TRUE(sendDescriptor(theirs, lingering.near));
    lingering.near.close();
    const auto start = std::chrono::steady_clock::now();
    closeUnread(std::move(ours));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  }

  std::vector<LingeringConnection> lingering_;
};

TEST_F(LocalNameTest, AConnectionIsClosedAtOnceWhateverWasLeftInIt) {
  const std::size_t threads = test::threadCount();
  closeWithSomethingLeft();
  EXPECT_EQ(test::threadCount(), threads + 1) << "it lingers in a thread of its own";
  EXPECT_FALSE(manyAreClosing());
  lingering_.clear();
  EXPECT_TRUE(test::eventually([&] { return test::threadCount() == threads; }));
}

TEST_F(LocalNameTest, ManyThatLingerAreTold) {
  for (int i = 0; i < 16; ++i) {
    EXPECT_FALSE(manyAreClosing());
    closeWithSomethingLeft();
  }
  EXPECT_TRUE(manyAreClosing());
  lingering_.clear();
  EXPECT_TRUE(test::eventually([&] { return !manyAreClosing(); }));
}

TEST_F(LocalNameTest, AnEmptyConnectionNeedsNoThread) {
  ASSERT_TRUE(test::eventually([] { return test::threadCount() == 1; })) << "those of the tests before have ended";
  for (int i = 0; i < 100; ++i) closeUnread(openPair().first);
  EXPECT_EQ(test::threadCount(), 1U);
}

TEST_F(LocalNameTest, OnlyTheOwnUserAndRootAreBelieved) {
  EXPECT_TRUE(isBelieved(root));
  EXPECT_TRUE(isBelieved(geteuid()));
  EXPECT_FALSE(isBelieved(geteuid() + 1));
  EXPECT_FALSE(isBelieved(userOf(Socket()))) << "of whom the system tells nothing";
  EXPECT_EQ(userOf(openPair().first), geteuid());
}

}  // namespace

}  // namespace fringix::platform
