#include <atomic>
#include <random>
#include <string>

#include "running_head.h"
#include "support/scratch_folder.h"

namespace fringix::head {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t accepted = 0;
constexpr std::int32_t noNameIsThatLong = 1;
constexpr std::int32_t noRoomForThatSize = 2;
constexpr std::int32_t badParameter = -3;
constexpr std::int32_t outOfMemory = -4;
constexpr std::size_t dataMemory = std::size_t{8} << 20;

HeadSettings limitedHead() {
  HeadSettings settings = smallHead();
  settings.dataMemory = dataMemory;
  return settings;
}

Bytes randomBytes(std::size_t count) {
  std::mt19937 generator(7);
  Bytes bytes(count);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(generator());
  return bytes;
}

class DataCommandsTest : public RunningHead {
 protected:
  explicit DataCommandsTest(const HeadSettings& settings = limitedHead()) : RunningHead(settings) {}

  void sendName(const std::string& name) { client->sendRaw({name.c_str(), name.size() + 1}); }

  static std::int32_t lengthOf(const std::string& name) { return static_cast<std::int32_t>(name.size() + 1); }

  std::int32_t save(const std::string& name, const Bytes& bytes) {
    EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {static_cast<std::int32_t>(bytes.size()), lengthOf(name)}), accepted);
    sendName(name);
    client->sendBytes(bytes);
    return client->receiveInt();
  }

  // Empty when the head has none.
  Bytes load(const std::string& name) {
    EXPECT_EQ(ask("81MSG_SLReadDataFromFile", {lengthOf(name)}), accepted);
    sendName(name);
    const auto size = static_cast<std::size_t>(client->receiveInt());
    if (size == 0) return {};
    Bytes bytes = client->receiveBytes(size);
    EXPECT_EQ(client->receiveInt(), 0);
    return bytes;
  }
};

TEST_F(DataCommandsTest, SavesAndLoadsBlocks) {
  const Bytes large = randomBytes(3'000'001);
  EXPECT_EQ(save("large.bin", large), 0);
  EXPECT_EQ(save("one", {7}), 0);
  EXPECT_EQ(load("large.bin"), large);
  EXPECT_EQ(load("one"), Bytes{7});
  expectInStep();
}

TEST_F(DataCommandsTest, ReplacesABlock) {
  EXPECT_EQ(save("one", {7}), 0);
  EXPECT_EQ(save("one", {8, 9}), 0);
  EXPECT_EQ(load("one"), (Bytes{8, 9}));
}

TEST_F(DataCommandsTest, AnUnknownBlockHasTheSizeZeroAndNothingFollows) {
  EXPECT_TRUE(load("none").empty());
  EXPECT_TRUE(load("../one").empty());
  expectInStep();
}

TEST_F(DataCommandsTest, RefusesAnImpossibleNameLengthBeforeTheName) {
  for (const std::int32_t length : {0, 1, 66, 2147483647, -1, -2147483647 - 1}) {
    EXPECT_EQ(ask("81MSG_SLReadDataFromFile", {length}), noNameIsThatLong) << length;
    EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {5, length}), noNameIsThatLong) << length;
  }
  expectInStep();
}

TEST_F(DataCommandsTest, TakesTheLongestName) {
  const std::string name(64, 'n');
  EXPECT_EQ(save(name, {1}), 0);
  EXPECT_EQ(load(name), Bytes{1});
}

TEST_F(DataCommandsTest, RefusesASizeWithoutRoomBeforeTheBlock) {
  for (const std::int32_t size : {0, -1, -2147483647 - 1, 2147483647, static_cast<std::int32_t>(dataMemory + 1)})
    EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {size, 5}), noRoomForThatSize) << size;
  expectInStep();
}

TEST_F(DataCommandsTest, ReadsARefusedBlockToItsEnd) {
  EXPECT_EQ(save("one", Bytes(dataMemory - 10, 1)), 0);
  EXPECT_EQ(save("two", Bytes(11, 1)), outOfMemory);
  for (const char* name : {"../two", "C:two", "a/b", "nul", ".two", "two."}) EXPECT_EQ(save(name, {1, 2, 3}), badParameter) << name;
  expectInStep();
}

TEST_F(DataCommandsTest, ANameEndsWithItsOnlyNul) {
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {3, 5}), accepted);
  client->sendRaw("block123");
  EXPECT_EQ(client->receiveInt(), badParameter);
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {3, 5}), accepted);
  client->sendRaw({"bl\0k\0xyz", 8});
  EXPECT_EQ(client->receiveInt(), badParameter);
  expectInStep();
}

TEST_F(DataCommandsTest, AClientThatLeavesInTheMiddleLeavesNothing) {
  EXPECT_EQ(save("one", {7}), 0);
  EXPECT_EQ(ask("80MSG_SLSaveDataToFile", {1000000, 4}), accepted);
  sendName("one");
  client->sendBytes(randomBytes(5000));
  client = std::make_unique<RawClient>();
  client->greet();
  EXPECT_EQ(load("one"), Bytes{7});
}

// Together they promise 40 GB: taken at their word, the head would be out of memory. One of them has a share of it.
TEST(PromiseTest, CostsTheHeadNothing) {
  HeadSettings settings = smallHead();
  settings.dataMemory = 2147483647;
  settings.roomLimit = std::chrono::milliseconds(0);
  std::atomic<int> troubles = 0;
  HeadServer server(settings, [&](Happening happening, const std::string&, const std::string&) {
    if (happening == Happening::trouble) ++troubles;
  });
  server.start();
  std::vector<RawClient> clients(20);
  for (auto& client : clients) {
    client.greet();
    client.sendText("80MSG_SLSaveDataToFile");
    client.sendInts({2147483647, 2});
    EXPECT_EQ(client.receiveInt(), &client == &clients.front() ? accepted : noRoomForThatSize);
    if (&client == &clients.front()) client.sendRaw({"a\0bytes", 7});
  }
  RawClient other;
  other.greet();
  other.sendText("21MSG_SLGetSerial");
  EXPECT_EQ(other.receiveInt(), smallSerial);
  server.stop();
  EXPECT_EQ(troubles, 0);
}

class StoredDataTest : public DataCommandsTest {
 protected:
  HeadSettings storing(const std::string& address) const {
    HeadSettings settings = limitedHead();
    settings.address = address;
    settings.storage = folder.path().string();
    return settings;
  }

  const test::ScratchFolder folder;
};

TEST_F(StoredDataTest, BlocksOutliveTheHead) {
  const Bytes bytes = randomBytes(100000);
  {
    HeadServer first(storing("127.0.0.3"));
    first.start();
    client = std::make_unique<RawClient>("127.0.0.3");
    client->greet();
    EXPECT_EQ(save("kept.bin", bytes), 0);
  }
  HeadServer next(storing("127.0.0.3"));
  next.start();
  client = std::make_unique<RawClient>("127.0.0.3");
  client->greet();
  EXPECT_EQ(load("kept.bin"), bytes);
}

}  // namespace
}  // namespace fringix::head
