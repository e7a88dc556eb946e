// More replies than any network has heads, and replies that are none.
#include <gtest/gtest.h>

#include <random>

#include "fringix/fringix.h"
#include "support/announcing_head.h"

namespace fringix::test {

namespace {

int scan() {
  int32_t count = -1;
  EXPECT_EQ(SLGetDeviceKeyListSize(&count), SLALL_OKAY);
  return count;
}

TEST(FloodTest, FiveThousandRepliesAtOnceAreAllListed) {
  std::vector<Announcement> replies;
  for (int serial = 5000; serial > 0; --serial) replies.push_back({announcement(serial)});
  const AnnouncingHead head(std::move(replies));
  EXPECT_EQ(scan(), 5000);
  DeviceKeyEntry key{};
  for (int index = 0; index < 256; ++index) {
    ASSERT_EQ(SLGetDeviceKeyListEntry(index, &key), SLALL_OKAY);
    ASSERT_EQ(key.serial, index + 1);
  }
}

TEST(FloodTest, RandomDatagramsDoNoHarm) {
  std::mt19937 random(4711);
  std::vector<Announcement> replies(20000);
  for (Announcement& reply : replies) {
    reply.bytes.resize(random() % 320);
    for (char& byte : reply.bytes) byte = static_cast<char>(random());
  }
  const AnnouncingHead head(std::move(replies));
  EXPECT_GT(scan(), 0) << "and it ends, soon after the last of them";
}

}  // namespace

}  // namespace fringix::test
