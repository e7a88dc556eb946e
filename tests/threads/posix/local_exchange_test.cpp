// Programs of the same user on the local socket by which the listeners of a host find each other, that are no listeners: as the one that
// has the name, and as a follower.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/datagram.h"
#include "support/eventually.h"
#include "support/posix/local_exchange.h"
#include "support/process_state.h"
#include "threads/gpio_thread.h"

namespace fringix::test {

namespace {

using platform::Socket;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t head = 0x7F000001;
constexpr std::uint16_t triggerPort = 44331;

// Has the name that a receiver has, and treats everybody who connects in its own way.
class Stranger {
 public:
  using Treatment = std::function<void(const Socket& connection)>;

  explicit Stranger(Treatment treatment) : listening_(openLocal()), treatment_(std::move(treatment)) {
    const ExchangeAddress address;
    if (bind(listening_.handle(), address.generic(), address.size) != 0 || listen(listening_.handle(), 8) != 0) {
      throw std::runtime_error("the stranger does not get the name");
    }
    thread_ = std::thread([this] { serve(); });
  }
  ~Stranger() {
    leave_.set();
    thread_.join();
  }
  Stranger(const Stranger&) = delete;
  Stranger& operator=(const Stranger&) = delete;

  int visitors() const { return visitors_; }

 private:
  void serve() {
    for (;;) {
      pollfd entries[] = {{listening_.handle(), POLLIN, 0}, {static_cast<int>(leave_.native()), POLLIN, 0}};
      if (poll(entries, 2, -1) < 0 || entries[1].revents != 0) return;
      const Socket connection(accept(listening_.handle(), nullptr, nullptr));
      treatment_(connection);
      ++visitors_;
    }
  }

  Socket listening_;
  Treatment treatment_;
  platform::ManualResetEvent leave_;
  std::atomic<int> visitors_{0};
  std::thread thread_;
};

struct CountingListener final : GPIOThread, TriggerCallbackClass {
  CountingListener() {
    setOwner(this);
    Start("127.0.0.1");
  }
  ~CountingListener() override { Stop(); }
  void OnTrigger() override { ++triggers; }
  int Init(std::unique_ptr<CommandChannel>) override { return 0; }

  bool hears() const {
    const int before = triggers;
    return eventually([&] {
      platform::sendDatagram(head, {head, triggerPort}, "02UDP_GPIO", 10);
      return eventually([&] { return triggers > before; }, std::chrono::milliseconds(20));
    });
  }

  std::atomic<int> triggers{0};
};

struct Unfriendly {
  const char* name;
  Stranger::Treatment treatment;
};

std::ostream& operator<<(std::ostream& out, const Unfriendly& stranger) { return out << stranger.name; }

void hangUp(const Socket&) {}
void sendGarbage(const Socket& connection) { send(connection.handle(), "garbage", 7, MSG_NOSIGNAL); }
void sendClosedPipes(const Socket& connection, std::size_t copies) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  close(ends[1]);
  const Socket reading(ends[0]);
  sendCopies(connection, reading.handle(), copies);
}

void sendAnEndlessFile(const Socket& connection) {
  const Socket zeros(open("/dev/zero", O_RDONLY | O_CLOEXEC));
  sendCopies(connection, zeros.handle(), 1);
}

class LocalExchangeTest : public testing::TestWithParam<Unfriendly> {};

TEST_P(LocalExchangeTest, AListenerDoesWithoutAStrangerThatHasTheName) {
  auto stranger = std::make_unique<Stranger>(GetParam().treatment);
  const CountingListener listener;
  EXPECT_TRUE(listener.hears());
  stranger.reset();
  const CountingListener follower;
  EXPECT_TRUE(follower.hears()) << "the listener has the name now";
  EXPECT_TRUE(listener.hears());
}

TEST_P(LocalExchangeTest, AListenerWithoutThePortKeepsAskingInPeace) {
  constexpr int visits = 32;                          // two for each time it asks
  constexpr std::chrono::milliseconds shortest{400};  // it asks again after a pause that grows to 64 ms
  Socket port = Socket::openDatagram();
  ASSERT_TRUE(port.bind({0, triggerPort}));
  auto stranger = std::make_unique<Stranger>(GetParam().treatment);
  const CountingListener listener;
  ASSERT_TRUE(eventually([&] { return stranger->visitors() > 0; }));
  const std::size_t descriptors = descriptorCount();
  const auto start = Clock::now();
  ASSERT_TRUE(eventually([&] { return stranger->visitors() > visits; }));
  EXPECT_GT(Clock::now() - start, shortest) << "it does not keep asking";
  stranger.reset();
  port.close();
  EXPECT_TRUE(listener.hears()) << "it has taken over";
  EXPECT_LE(descriptorCount(), descriptors + 2) << "no more than the two sockets of a receiver";
}

INSTANTIATE_TEST_SUITE_P(
    Strangers, LocalExchangeTest,
    testing::Values(Unfriendly{"HangsUp", hangUp}, Unfriendly{"SendsGarbage", sendGarbage},
                    Unfriendly{"HandsOutAClosedPipe", [](const Socket& connection) { sendClosedPipes(connection, 1); }},
                    Unfriendly{"HandsOutTwoDescriptors", [](const Socket& connection) { sendClosedPipes(connection, 2); }},
                    Unfriendly{"HandsOutAnEndlessFile", sendAnEndlessFile},
                    Unfriendly{"HandsOutManyDescriptors", [](const Socket& connection) { sendClosedPipes(connection, 40); }}),
    [](const auto& test) { return test.param.name; });

TEST(ServingNobodyTest, AListenerThatIsLeftWaitingDoesWithoutTheOthers) {
  const ExchangeAddress address;
  Socket name = openLocal();
  ASSERT_EQ(bind(name.handle(), address.generic(), address.size), 0);
  ASSERT_TRUE(name.listen(8));
  const CountingListener listener;
  EXPECT_TRUE(listener.hears());
  name.close();
  const CountingListener follower;
  EXPECT_TRUE(follower.hears());
}

// Connects as a follower does; what the receiver hands to it.
Socket follow() {
  const ExchangeAddress address;
  const Socket connection = openLocal();
  if (connect(connection.handle(), address.generic(), address.size) != 0) return {};
  char byte = 0;
  iovec content{&byte, 1};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
  msghdr message{};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  if (recvmsg(connection.handle(), &message, MSG_CMSG_CLOEXEC) != 1) return {};
  const cmsghdr* const header = CMSG_FIRSTHDR(&message);
  if (header == nullptr) return {};
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
  return Socket(descriptor);
}

TEST(IdleFollowerTest, MissesTriggersAndDelaysNobody) {
  constexpr int memoryPage = 4096;
  constexpr int fits = memoryPage / 4;
  const CountingListener receiver;
  ASSERT_TRUE(receiver.hears());
  const Socket idle = follow();
  ASSERT_TRUE(idle.valid());
  ASSERT_EQ(fcntl(idle.handle(), F_SETPIPE_SZ, memoryPage), memoryPage);
  const CountingListener follower;
  ASSERT_TRUE(follower.hears());
  const int start = receiver.triggers;
  while (receiver.triggers < start + fits + 100) ASSERT_TRUE(receiver.hears());
  EXPECT_TRUE(follower.hears());
  std::vector<std::uint32_t> told(2 * fits);
  EXPECT_EQ(read(idle.handle(), told.data(), memoryPage * 2), memoryPage) << "as many as it had room for";
  EXPECT_EQ(told.front(), head);
  ASSERT_TRUE(receiver.hears());
  EXPECT_GE(read(idle.handle(), told.data(), memoryPage), 4) << "it is told again once it has room";
}

}  // namespace

}  // namespace fringix::test
