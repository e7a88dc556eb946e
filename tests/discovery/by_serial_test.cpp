// Opening a head by its serial number.
#include <gtest/gtest.h>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "support/announcing_head.h"

namespace fringix::test {

namespace {

constexpr std::chrono::milliseconds atOnce{0};

TEST(BySerialTest, OpensTheHeadThatAnnouncesTheNumber) {
  const AnnouncingHead announcing({{announcement(30)}, {announcement(20)}, {announcement(10)}});
  ScriptedHead head(handshake());
  int32_t handle = -1;
  ASSERT_EQ(SLDevAllocBySerial(20, &handle), SLALL_OKAY);
  uint32_t width = 0;
  EXPECT_EQ(SLGetCameraSize(handle, &width, nullptr), SLALL_OKAY);
  EXPECT_EQ(width, 8U);
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
}

TEST(BySerialTest, OfSeveralTheFirstThatAnsweredIsTaken) {
  if (!canAnswerFrom("127.0.0.7")) GTEST_SKIP() << "datagrams cannot be sent from a chosen address here";
  const AnnouncingHead announcing({{announcement(20), atOnce, "127.0.0.7"}, {announcement(20), atOnce, "127.0.0.8"}});
  ScriptedHead head(handshake(), "127.0.0.7");
  int32_t handle = -1;
  ASSERT_EQ(SLDevAllocBySerial(20, &handle), SLALL_OKAY);
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
}

TEST(BySerialTest, NobodyAnswers) {
  int32_t handle = 5;
  EXPECT_EQ(SLDevAllocBySerial(20, &handle), SLCONNECTION_ERROR);
  EXPECT_EQ(handle, 5) << "no opening was tried";
}

TEST(BySerialTest, NobodyHasTheNumber) {
  const AnnouncingHead announcing({{announcement(19)}, {announcement(21)}});
  int32_t handle = 5;
  EXPECT_EQ(SLDevAllocBySerial(20, &handle), SLCONNECTION_ERROR);
  EXPECT_EQ(handle, 5);
}

TEST(BySerialTest, TheOpeningsOwnResultIsHandedOn) {
  const AnnouncingHead announcing({{announcement(20)}});
  int32_t handle = 5;
  EXPECT_EQ(SLDevAllocBySerial(20, &handle), SLCONNECTION_ERROR) << "nothing listens there";
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(SLDevAllocBySerial(20, nullptr), SLBAD_PARAMETER);
  EXPECT_EQ(SLDevAllocBySerial(21, nullptr), SLCONNECTION_ERROR) << "only an opening looks at the handle";
}

TEST(BySerialTest, AHeadBeyondThe256thIsOutOfReach) {
  std::vector<Announcement> replies;
  for (int serial = 0; serial < 258; ++serial) replies.push_back({announcement(serial)});
  const AnnouncingHead announcing(replies);
  int32_t handle = 5;
  EXPECT_EQ(SLDevAllocBySerial(255, &handle), SLCONNECTION_ERROR) << "found, but nothing listens there";
  EXPECT_EQ(SLDevAllocBySerial(257, &handle), SLBAD_PARAMETER) << "the refusal of entry 256";
  EXPECT_EQ(SLDevAllocBySerial(4711, &handle), SLBAD_PARAMETER) << "the same for a number that nobody has";
}

}  // namespace

}  // namespace fringix::test
