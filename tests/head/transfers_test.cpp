// What clients send and fetch at the same time shares the head's memory, and costs it no more than that.
#include <string>

#include "running_head.h"
#include "support/eventually.h"

namespace fringix::head {
namespace {

using test::eventually;

constexpr std::int32_t accepted = 0;
constexpr std::int32_t noRoomForThatSize = 2;
constexpr std::int32_t badParameter = -3;
constexpr std::int32_t outOfMemory = -4;
constexpr std::int32_t wholeRoom = 32 << 20;  // more than the system takes for a client that does not read

// Room for one block of that size under way, and few milliseconds of waiting for it.
HeadSettings crowdedHead(std::chrono::milliseconds roomLimit = std::chrono::milliseconds(50)) {
  HeadSettings settings = smallHead();
  settings.dataMemory = wholeRoom;
  settings.transferMemory = 0;
  settings.roomLimit = roomLimit;
  return settings;
}

class TransfersTest : public RunningHead {
 protected:
  explicit TransfersTest(const HeadSettings& settings = crowdedHead()) : RunningHead(settings) { other.greet(); }

  static void announce(RawClient& sender, std::int32_t size, std::string_view command = "80MSG_SLSaveDataToFile") {
    sender.sendText(command);
    sender.sendInts({size, 2});
  }

  // Takes all the memory with a block that does not arrive.
  void fill() {
    announce(other, wholeRoom);
    EXPECT_EQ(other.receiveInt(), accepted);
  }

  void finish() {
    other.sendRaw({"a", 2});
    other.sendBytes(std::vector<std::uint8_t>(wholeRoom, 1));
    EXPECT_EQ(other.receiveInt(), 0);
  }

  std::size_t left() { return server.model().transfers().left(); }

  RawClient other;
};

class PatientTransfersTest : public TransfersTest {
 protected:
  PatientTransfersTest() : TransfersTest(crowdedHead(std::chrono::seconds(20))) {}
};

TEST_F(TransfersTest, ABlockIsRefusedBeforeItIsSentWhenAnotherHasTheMemory) {
  fill();
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {1, 2}), noRoomForThatSize);
  expectInStep();
  finish();
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {1, 2}), accepted);
}

TEST_F(PatientTransfersTest, ABlockWaitsForTheMemoryOfAnother) {
  fill();
  say("80MSG_SLSaveDataToFile", {wholeRoom, 2});
  finish();
  EXPECT_EQ(client->receiveInt(), accepted);
}

TEST_F(PatientTransfersTest, AClientThatLeavesGivesItsMemoryBack) {
  fill();
  say("80MSG_SLSaveDataToFile", {wholeRoom, 2});
  other.close();
  EXPECT_EQ(client->receiveInt(), accepted);
}

TEST_F(PatientTransfersTest, AHeadStopsWhileClientsWait) {
  fill();
  say("80MSG_SLSaveDataToFile", {wholeRoom, 2});
  const auto begin = std::chrono::steady_clock::now();
  server.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(PatientTransfersTest, WhatIsNoSizeOrNameIsRefusedAtOnce) {
  fill();
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {wholeRoom + 1, 2}), noRoomForThatSize);
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {1, 1}), 1);
  const std::int32_t id = static_cast<std::int32_t>(allocate(1));
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 0, 99, 0, 0}), badParameter);
  expectInStep();
}

// A block in memory that is being sent to a client that does not read it is there, even after another one has taken its place.
TEST_F(TransfersTest, ABlockThatIsFetchedTakesMemoryUntilItIsSent) {
  fill();
  finish();
  other.sendText("81MSG_SLReadDataFromFile");
  other.sendInts({2});
  EXPECT_EQ(other.receiveInt(), accepted);
  other.sendRaw({"a", 2});
  EXPECT_EQ(other.receiveInt(), wholeRoom);
  EXPECT_EQ(left(), 0U);
  EXPECT_EQ(ask("81MSG_SLReadDataFromFile", {2}), accepted);
  client->sendRaw({"a", 2});
  EXPECT_TRUE(client->closedByHead()) << "no answer says that there is no room";
  other.receiveBytes(wholeRoom);
  EXPECT_EQ(other.receiveInt(), 0);
  EXPECT_TRUE(eventually([&] { return left() == wholeRoom; }));
}

TEST_F(TransfersTest, ImagesAndMasksAreReadAndRefusedWithoutMemory) {
  const auto id = static_cast<std::int32_t>(allocate(1));
  fill();
  const std::vector<std::uint8_t> image(32 * 20 * 3, 9);
  say("12MSG_SLSeqPut", {id, 0, 32, 20, 96});
  client->sendBytes(image);
  EXPECT_EQ(client->receiveInt(), outOfMemory);
  say("00MSG_SLShowImage24", {32, 20, 96});
  client->sendBytes(image);
  EXPECT_EQ(client->receiveInt(), outOfMemory);
  say("290MSG_SLSetMask", {0, 32, 20});
  client->sendBytes(std::vector<std::uint8_t>(32 * 20, 1));
  EXPECT_EQ(client->receiveInt(), outOfMemory);
  say("16MSG_SLSeqMakeFromLine8", {id, 0, 32});
  client->sendBytes(std::vector<std::uint8_t>(32, 1));
  EXPECT_EQ(client->receiveInt(), outOfMemory);
  expectInStep();
}

TEST_F(TransfersTest, NothingIsGeneratedWithoutMemory) {
  const auto id = static_cast<std::int32_t>(allocate(2));
  fill();
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 0, 0, 0, 0}), outOfMemory);
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 0, 2, 8, 0}), outOfMemory);
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 0, 255, 0}), outOfMemory);
  finish();
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 0, 255, 0}), 0);
}

TEST_F(TransfersTest, TestPatternsNeedMemory) {
  fill();
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {4, 2}), (std::vector<std::int32_t>{0, 0, 0, outOfMemory}));
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {1, 0}), (std::vector<std::int32_t>{1, 0, 0, 0})) << "nothing else does";
  finish();
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {4, 2}), (std::vector<std::int32_t>{2, 0, 0, 0}));
}

TEST_F(TransfersTest, PicturesAreMissingWithoutMemory) {
  const auto id = static_cast<std::int32_t>(allocate(1));
  EXPECT_EQ(ask("60MSG_SLStartMeasurement", {id}), 0);
  const auto isThere = [](const std::vector<std::uint8_t>& picture) { return picture[0] != 0x00 || picture[1] != 0xFF; };
  fill();
  EXPECT_FALSE(isThere(askBytes(frameBytes, "41MSG_SLGetLiveImage")));
  EXPECT_FALSE(isThere(askBytes(16, "44MSG_SLGetImageIndexROI", {0, 0, 4, 4, 0})));
  EXPECT_TRUE(isThere(askBytes(frameBytes, "43MSG_SLGetImageIndex", {0}))) << "it is sent from where it is stored";
  finish();
  EXPECT_TRUE(isThere(askBytes(frameBytes, "41MSG_SLGetLiveImage")));
  EXPECT_TRUE(isThere(askBytes(16, "44MSG_SLGetImageIndexROI", {0, 0, 4, 4, 0})));
}

TEST_F(TransfersTest, DecodedNumbersAreAllEmptyWithoutMemory) {
  const auto id = static_cast<std::int32_t>(allocate(2));
  EXPECT_EQ(ask("60MSG_SLStartMeasurement", {id}), 0);
  fill();
  say("90MSG_SLCalcGrayCode", {0, 1, 0, 0});
  EXPECT_EQ(client->receiveBytes(2 * frameBytes), std::vector<std::uint8_t>(2 * frameBytes, 0xFF));
  EXPECT_EQ(client->receiveInt(), outOfMemory);
  finish();
  say("90MSG_SLCalcGrayCode", {0, 1, 0, 0});
  EXPECT_NE(client->receiveBytes(2 * frameBytes), std::vector<std::uint8_t>(2 * frameBytes, 0xFF));
  EXPECT_EQ(client->receiveInt(), 0);
}

TEST_F(TransfersTest, EverythingIsGivenBack) {
  const auto id = static_cast<std::int32_t>(allocate(2));
  say("12MSG_SLSeqPut", {id, 0, 32, 20, 96});
  client->sendBytes(std::vector<std::uint8_t>(32 * 20 * 3, 9));
  EXPECT_EQ(client->receiveInt(), 0);
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 0, 2, 8, 0}), 0);
  say("80MSG_SLSaveDataToFile", {100, 2});
  client = std::make_unique<RawClient>();
  client->greet();
  expectInStep();
  EXPECT_TRUE(eventually([&] { return left() == wholeRoom; }));
}

}  // namespace
}  // namespace fringix::head
