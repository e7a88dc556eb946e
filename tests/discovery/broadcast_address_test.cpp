// Where a scan sends its requests.
#include <gtest/gtest.h>

#include <algorithm>

#include "discovery/broadcast_addresses.h"
#include "support/eventually.h"

namespace fringix::test {

namespace {

TEST(BroadcastAddressTest, FillsTheHostPartOfTheNetwork) {
  EXPECT_EQ(broadcastAddress({0xC0A8010A, 0xFFFFFF00, true}), "192.168.1.255");
  EXPECT_EQ(broadcastAddress({0x7F000001, 0xFF000000, true}), "127.255.255.255");
  EXPECT_EQ(broadcastAddress({0x0A010203, 0xFFFFFE00, true}), "10.1.3.255");
}

TEST(BroadcastAddressTest, OfALoneAddressIsTheAddress) { EXPECT_EQ(broadcastAddress({0x0A090001, 0xFFFFFFFF, true}), "10.9.0.1"); }

TEST(BroadcastAddressTest, OfAllAddressesIsTheLimitedOne) { EXPECT_EQ(broadcastAddress({0x0A090001, 0, true}), "255.255.255.255"); }

TEST(BroadcastAddressTest, WithoutABroadcastItIsTheNetworksOwnAddress) {
  EXPECT_EQ(broadcastAddress({0xC0A8010A, 0xFFFFFF00, false}), "192.168.1.0");
}

// Wine starts its network driver beside the first program; until then a host has no networks.
TEST(BroadcastAddressTest, TheLoopbackIsAmongTheNetworks) {
  std::vector<std::string> addresses;
  EXPECT_TRUE(eventually([&] {
    addresses = CollectBroadcastAddresses();
    return !addresses.empty();
  }));
  EXPECT_EQ(std::count(addresses.begin(), addresses.end(), "127.255.255.255"), 1);
}

}  // namespace

}  // namespace fringix::test
