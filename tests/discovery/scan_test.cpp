// Scans as a program sees them: who is asked and how, which replies count, and what the list says afterwards.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "fringix/fringix.h"
#include "support/announcing_head.h"

namespace fringix::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

int scan() {
  int32_t count = -1;
  EXPECT_EQ(SLGetDeviceKeyListSize(&count), SLALL_OKAY);
  return count;
}

DeviceKeyEntryEx entryAt(int index) {
  DeviceKeyEntryEx entry{};
  EXPECT_EQ(SLGetDeviceKeyListEntryEx(index, &entry), SLALL_OKAY) << index;
  return entry;
}

std::vector<int> serials(int count) {
  std::vector<int> all;
  for (int i = 0; i < count; ++i) all.push_back(entryAt(i).serial);
  return all;
}

// The serial numbers that a scan lists when these are the replies.
std::vector<int> listed(std::vector<Announcement> replies) {
  const AnnouncingHead head(std::move(replies));
  return serials(scan());
}

TEST(ScanTest, AsksEachNetworkOnceWithTheBareName) {
  AnnouncingHead head({});
  scan();
  EXPECT_EQ(head.requests(), std::vector<Bytes>{"01UDP_SLANNOUNCE"});
}

TEST(ScanTest, WithoutAHeadTheListIsEmptied) {
  ASSERT_EQ(listed({{announcement(1)}}), std::vector<int>{1});
  const auto start = Clock::now();
  EXPECT_EQ(scan(), 0);
  EXPECT_GE(Clock::now() - start, 290ms);
  DeviceKeyEntry entry{7, 8, nullptr};
  EXPECT_EQ(SLGetDeviceKeyListEntry(0, &entry), SLBAD_PARAMETER);
  EXPECT_EQ(entry.serial, 7);
}

TEST(ScanTest, TheCountMayBeLeftOut) {
  const AnnouncingHead head({{announcement(5)}});
  EXPECT_EQ(SLGetDeviceKeyListSize(nullptr), SLALL_OKAY);
  EXPECT_EQ(serials(1), std::vector<int>{5});
}

TEST(ScanTest, AnEntryTellsAllThatTheReplySaid) {
  const AnnouncingHead head({{"S 1234 M 1 I 5 6 A 7 B 8 C 9 D 10 E 11"}});
  ASSERT_EQ(scan(), 1);
  DeviceKeyEntryEx entry{};
  entry.reserved = 0x5EED;
  ASSERT_EQ(SLGetDeviceKeyListEntryEx(0, &entry), SLALL_OKAY);
  EXPECT_EQ(entry.reserved, 0x5EED) << "never written";
  EXPECT_EQ(entry.serial, 1234);
  EXPECT_STREQ(entry.modelName, "QOR_T3D");
  EXPECT_STREQ(entry.ipAddress, "127.0.0.1");
  EXPECT_EQ((std::vector{entry.info1, entry.info2, entry.info3, entry.info4, entry.info5, entry.info6, entry.info7}),
            (std::vector{5, 6, 7, 8, 9, 10, 11}));

  DeviceKeyEntry key{};
  ASSERT_EQ(SLGetDeviceKeyListEntry(0, &key), SLALL_OKAY);
  EXPECT_EQ(key.serial, 1234);
  EXPECT_EQ(key.info1, 5);
  EXPECT_EQ(key.ipAddress, entry.ipAddress) << "one text for both";
}

TEST(ScanTest, AHeadsAddressIsTheOneThatItAnswersFrom) {
  if (!canAnswerFrom("127.201.2.103")) GTEST_SKIP() << "datagrams cannot be sent from a chosen address here";
  const AnnouncingHead head({{announcement(2), 0ms, "127.201.2.103"}, {announcement(1), 0ms, "127.0.0.2"}});
  ASSERT_EQ(scan(), 2);
  EXPECT_STREQ(entryAt(0).ipAddress, "127.0.0.2");
  EXPECT_STREQ(entryAt(1).ipAddress, "127.201.2.103");
}

TEST(ScanTest, TextsStayWhereTheyAreUntilTheNextScan) {
  const AnnouncingHead head({{announcement(2)}, {announcement(1)}});
  ASSERT_EQ(scan(), 2);
  const DeviceKeyEntryEx before = entryAt(1);
  entryAt(0);
  EXPECT_EQ(entryAt(1).ipAddress, before.ipAddress);
  EXPECT_EQ(entryAt(1).modelName, before.modelName);
}

TEST(ScanTest, AMalformedReplyIsListedWithWhatItHas) {
  const AnnouncingHead head({{"S 1234"}, {"1234 S 1"}});
  ASSERT_EQ(scan(), 2);
  EXPECT_EQ(serials(2), (std::vector{-1, 1234}));
  EXPECT_STREQ(entryAt(1).modelName, "UNKNOWN_DEVICE");
  EXPECT_EQ(entryAt(1).info7, -1);
}

TEST(ScanTest, HeadsAreSortedBySerial) {
  EXPECT_EQ(listed({{announcement(30)}, {announcement(10)}, {announcement(20)}, {announcement(-5)}}), (std::vector{-5, 10, 20, 30}));
}

TEST(ScanTest, HeadsWithOneSerialStayInTheOrderOfTheirReplies) {
  const AnnouncingHead head({{announcement(10, 1, 100)}, {announcement(9, 1, 200)}, {announcement(10, 1, 50)}, {announcement(10, 1, 75)}});
  ASSERT_EQ(scan(), 4);
  EXPECT_EQ(serials(4), (std::vector{9, 10, 10, 10}));
  EXPECT_EQ((std::vector{entryAt(1).info1, entryAt(2).info1, entryAt(3).info1}), (std::vector{100, 50, 75}));
}

TEST(ScanTest, RepliesUpTo298BytesCount) {
  const auto ofSize = [](int serial, std::size_t size) {
    Bytes bytes = announcement(serial) + " ";
    bytes.resize(size, 'x');
    return Announcement{bytes};
  };
  EXPECT_EQ(listed({ofSize(1, 297), ofSize(2, 298), ofSize(3, 299), ofSize(4, 300), ofSize(5, 301), ofSize(6, 1400), ofSize(7, 298)}),
            (std::vector{1, 2, 7}));
}

TEST(ScanTest, AnEmptyDatagramIsPassedOver) { EXPECT_EQ(listed({{""}, {announcement(1)}, {""}}), std::vector<int>{1}); }

TEST(ScanTest, EachReplyStartsTheWaitAnew) {
  EXPECT_EQ(listed({{announcement(1), 200ms}, {announcement(2), 200ms}, {announcement(3), 200ms}}), (std::vector{1, 2, 3}));
}

TEST(ScanTest, DroppedDatagramsStartTheWaitAnew) {
  EXPECT_EQ(listed({{"", 200ms}, {Bytes(299, 'x'), 200ms}, {announcement(3), 200ms}}), std::vector<int>{3});
}

TEST(ScanTest, ALateReplyIsNotListed) { EXPECT_EQ(listed({{announcement(1)}, {announcement(2), 800ms}}), std::vector<int>{1}); }

TEST(ScanTest, ScansOfSeveralThreadsDoNotOverlap) {
  const auto start = Clock::now();
  std::int32_t counts[2] = {42, 42};
  std::thread other([&] { SLGetDeviceKeyListSize(&counts[0]); });
  SLGetDeviceKeyListSize(&counts[1]);
  other.join();
  EXPECT_EQ(counts[0], 0);
  EXPECT_EQ(counts[1], 0);
  EXPECT_GE(Clock::now() - start, 590ms);
}

TEST(ListTest, EntriesBeyondThe256thAreCountedButNotGiven) {
  std::vector<Announcement> replies;
  for (int serial = 0; serial < 258; ++serial) replies.push_back({announcement(serial)});
  const AnnouncingHead head(replies);
  ASSERT_EQ(scan(), 258);
  EXPECT_EQ(entryAt(255).serial, 255);
  DeviceKeyEntryEx entry{};
  DeviceKeyEntry key{};
  for (const int index : {256, 257, 258, -1, -2147483647 - 1}) {
    EXPECT_EQ(SLGetDeviceKeyListEntryEx(index, &entry), SLBAD_PARAMETER) << index;
    EXPECT_EQ(SLGetDeviceKeyListEntry(index, &key), SLBAD_PARAMETER) << index;
  }
}

TEST(ListTest, AnIndexOutsideAndAMissingRecordAreRefused) {
  ASSERT_EQ(listed({{announcement(1)}}), std::vector<int>{1});
  DeviceKeyEntry key{7, 8, nullptr};
  EXPECT_EQ(SLGetDeviceKeyListEntry(1, &key), SLBAD_PARAMETER);
  EXPECT_EQ(key.serial, 7);
  EXPECT_EQ(SLGetDeviceKeyListEntry(0, nullptr), SLBAD_PARAMETER);
  EXPECT_EQ(SLGetDeviceKeyListEntryEx(0, nullptr), SLBAD_PARAMETER);
}

}  // namespace

}  // namespace fringix::test
