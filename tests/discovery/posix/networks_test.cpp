// Scans of a host with several networks.
#include "support/posix/networks.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "fringix/fringix.h"
#include "platform/socket.h"
#include "support/announcing_head.h"

namespace fringix::test {

namespace {

using platform::Socket;

constexpr std::uint16_t announcePort = 44332;

// A head that hears only what is sent to `address`: one network's broadcast address, or 0.0.0.0 for all of them.
class NetworkHead {
 public:
  NetworkHead(const std::string& address, int serial) : socket_(Socket::openDatagram()) {
    socket_.setReuseAddress(true);
    if (!socket_.bind({platform::parseIpv4(address.c_str()), announcePort})) throw std::runtime_error("no head can be at " + address);
    thread_ = std::thread([this, serial] { serve(announcement(serial)); });
  }
  ~NetworkHead() {
    socket_.shutdown();
    thread_.join();
  }

  int requests() const { return requests_; }

 private:
  void serve(const Bytes& reply) {
    std::array<char, 300> buffer;
    platform::Ipv4Endpoint client;
    while (socket_.receiveFrom(buffer.data(), buffer.size(), &client) > 0) {
      ++requests_;
      socket_.sendTo(reply.data(), reply.size(), client);
    }
  }

  Socket socket_;
  std::atomic<int> requests_ = 0;
  std::thread thread_;
};

using Found = std::vector<std::pair<int, std::string>>;

Found scan() {
  int32_t count = 0;
  SLGetDeviceKeyListSize(&count);
  Found found;
  for (int32_t index = 0; index < count; ++index) {
    DeviceKeyEntry key{};
    SLGetDeviceKeyListEntry(index, &key);
    found.emplace_back(key.serial, key.ipAddress);
  }
  return found;
}

void twoNetworks() {
  Networks networks;
  networks.connect("first", "10.1.0.1/24", "10.1.0.2/24");
  networks.connect("second", "10.2.0.1/16", "10.2.0.2/16");
  std::unique_ptr<NetworkHead> behindFirst, behindSecond, behindBoth;
  networks.onTheHeadsSide([&] {
    behindFirst = std::make_unique<NetworkHead>("10.1.0.255", 30);
    behindSecond = std::make_unique<NetworkHead>("10.2.255.255", 10);
    behindBoth = std::make_unique<NetworkHead>("0.0.0.0", 20);
  });
  EXPECT_EQ(scan(), (Found{{10, "10.2.0.2"}, {20, "10.1.0.2"}, {20, "10.2.0.2"}, {30, "10.1.0.2"}}));
}

void oddMasks() {
  Networks networks;
  networks.connect("alone", "10.3.0.1/32", "");
  networks.connect("everything", "10.4.0.1/0", "10.4.0.2/0");
  const NetworkHead atTheLoneAddress("10.3.0.1", 1);
  std::unique_ptr<NetworkHead> behindEverything;
  networks.onTheHeadsSide([&] { behindEverything = std::make_unique<NetworkHead>("0.0.0.0", 2); });
  EXPECT_EQ(scan(), (Found{{1, "10.3.0.1"}})) << "the broadcast address of a lone address is the address";
  EXPECT_EQ(behindEverything->requests(), 0) << "nothing goes to 255.255.255.255";
}

// A network that is down takes no request: no entries, and no wait for them.
void networkThatIsDown() {
  Networks networks;
  networks.connect("third", "10.5.0.1/24", "");
  ASSERT_EQ(std::system("ip link set third down"), 0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(scan(), Found{});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(590)) << "the loopback takes 300";
}

class NetworksTest : public testing::TestWithParam<void (*)()> {};

TEST_P(NetworksTest, AreEachAskedOnTheirOwn) {
  const Verdict verdict = inProcessWithNetworks(GetParam());
  if (verdict == Verdict::notPermitted) GTEST_SKIP() << "network namespaces and interfaces for them (/dev/net/tun) are not permitted here";
  EXPECT_EQ(verdict, Verdict::passed) << "see the failures above";
}

std::string situation(const testing::TestParamInfo<void (*)()>& test) {
  return std::array{"TwoWithHeadsBehindEachAndBoth", "MasksWithoutAHostPartAndWithoutANetworkPart", "OneThatIsDown"}.at(test.index);
}

INSTANTIATE_TEST_SUITE_P(Hosts, NetworksTest, testing::Values(&twoNetworks, &oddMasks, &networkThatIsDown), situation);

}  // namespace

}  // namespace fringix::test
