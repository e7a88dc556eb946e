#include "heads/udp_table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace fringix::tool {
namespace {

TEST(UdpTable, GivesWhoHasThePort) {
  std::istringstream table(
      "   sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode ref pointer drops\n"
      "  341: 0100007F:AD2C 00000000:0000 07 00000000:00000000 00:00000000 00000000  1000        0 111 2 0000000000000000 0\n"
      "  340: 00000000:AD2B 00000000:0000 07 00000000:00000000 00:00000000 00000000  1001        0 4294967296 2 0000000000000000 0\n"
      " 9999: 00000000:AD2B 0100007F:0035 01 00000000:00000000 00:00000000 00000000     0        0 113 2 0000000000000000 7\n");
  const std::vector<UdpSocket> sockets = readUdpTable(table, 44331);
  ASSERT_EQ(sockets.size(), 2U);
  EXPECT_EQ(sockets[0].inode, 4294967296U);
  EXPECT_EQ(sockets[0].user, 1001U);
  EXPECT_EQ(sockets[1].inode, 113U);
  EXPECT_EQ(sockets[1].user, 0U);
}

TEST(UdpTable, ReadsTheLongerAddressesToo) {
  std::istringstream table(
      "  340: 00000000000000000000000000000000:AD2B 00000000000000000000000000000000:0000 07 00000000:00000000 00:00000000 00000000  1000"
      "        0 77 2 0000000000000000 0\n");
  ASSERT_EQ(readUdpTable(table, 44331).size(), 1U);
}

TEST(UdpTable, PassesOverWhatItCannotRead) {
  std::istringstream table("\n340: 00000000\n340: 00000000:XYZ 0 0 0 0 0 1 0 1\n340: 00000000:AD2B 0 0 0 0 0 me 0 1\n");
  EXPECT_TRUE(readUdpTable(table, 44331).empty());
}

}  // namespace
}  // namespace fringix::tool
