// What only the data, configuration and pass-through commands do, and replies that no honest head sends.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "support/process_state.h"

namespace fringix::test {

namespace {

const Bytes saveRequest = text("80MSG_SLSaveDataToFile") + integers(4, 6);
const Bytes loadRequest = text("81MSG_SLReadDataFromFile") + integers(6);
const Bytes name("a.bin", 6);
const std::uint8_t content[4] = {1, 2, 3, 4};

// What a reply that only claims to be huge may cost in memory.
constexpr std::size_t costOfAClaim = std::size_t{8} << 20;

struct Loaded {
  std::uint8_t* data = reinterpret_cast<std::uint8_t*>(16);  // no block: the call must replace it
  std::int32_t size = 42;
  int result;

  explicit Loaded(OpenSession& session) : result(SLLoadData(session.handle(), &data, &size, "a.bin")) {}
  ~Loaded() { EXPECT_EQ(SLFreeData(data), SLALL_OKAY); }
};

TEST(DataTest, ARefusedBlockIsNotSent) {
  for (const int answer : {5, -20}) {
    OpenSession session({expect(saveRequest), reply(integer(answer))});
    EXPECT_EQ(SLSaveData(session.handle(), content, 4, "a.bin"), answer);
    EXPECT_EQ(readable(session.sent()), readable(saveRequest));
  }
}

TEST(DataTest, ASizeBelowZeroIsTheHeadsToRefuse) {
  for (const int size : {-1, INT_MIN}) {
    const Bytes request = text("80MSG_SLSaveDataToFile") + integers(size, 6);
    OpenSession session({expect(request), reply(integer(2))});
    EXPECT_EQ(SLSaveData(session.handle(), content, size, "a.bin"), 2);
    EXPECT_EQ(readable(session.sent()), readable(request));
  }
}

TEST(DataTest, ASizeBelowZeroThatIsAcceptedSendsNoData) {
  for (const int size : {-1, INT_MIN}) {
    const Bytes request = text("80MSG_SLSaveDataToFile") + integers(size, 6);
    OpenSession session({expect(request), reply(integer(0)), expect(name), reply(integer(0))});
    EXPECT_EQ(SLSaveData(session.handle(), content, size, "a.bin"), SLALL_OKAY);
    EXPECT_EQ(readable(session.sent()), readable(request + name));
  }
}

TEST(DataTest, ARefusedFileGetsNoName) {
  OpenSession session({expect(loadRequest), reply(integer(5))});
  const Loaded loaded(session);
  EXPECT_EQ(loaded.result, 5);
  EXPECT_EQ(loaded.data, nullptr);
  EXPECT_EQ(loaded.size, 0);
  EXPECT_EQ(readable(session.sent()), readable(loadRequest));
}

TEST(DataTest, AnEmptyFileHasNoStatus) {
  OpenSession session(
      {expect(loadRequest), reply(integer(0)), expect(name), reply(integer(0)), expect(text("56MSG_SLGetGain")), reply(integer(9))});
  const Loaded loaded(session);
  EXPECT_EQ(loaded.result, SLALL_OKAY);
  EXPECT_EQ(loaded.data, nullptr);
  EXPECT_EQ(loaded.size, 0);
  std::int32_t gain = 0;
  EXPECT_EQ(SLGetGain(session.handle(), &gain), SLALL_OKAY);
  EXPECT_EQ(gain, 9) << "nothing of the load was left to read";
}

TEST(DataTest, ABlockIsTheCallersWhateverBecomesOfTheRest) {
  const Bytes block = noise(4);
  for (const auto& [rest, result] : {std::pair{block + integer(1), SLSYSTEM_ERROR}, std::pair{block, SLCONNECTION_ERROR},
                                     std::pair{block.substr(0, 3), SLCONNECTION_ERROR}}) {
    OpenSession session({expect(loadRequest), reply(integer(0)), expect(name), reply(integer(4) + rest), cut()});
    const Loaded loaded(session);
    EXPECT_EQ(loaded.result, result);
    EXPECT_NE(loaded.data, nullptr);
    EXPECT_EQ(loaded.size, 4);
  }
}

TEST(DataTest, ASizeBelowZeroIsAnErrorAndTheSessionGoesOn) {
  for (const int size : {-1, INT_MIN}) {
    OpenSession session({expect(loadRequest), reply(integer(0)), expect(name), reply(integer(size)), expect(text("100MSG_SLNOOP"))});
    const Loaded loaded(session);
    EXPECT_EQ(loaded.result, SLSYSTEM_ERROR);
    EXPECT_EQ(loaded.data, nullptr);
    EXPECT_EQ(session.device().Noop(), SLALL_OKAY);
  }
}

TEST(DataTest, AHugeSizeWithNothingBehindItFails) {
  OpenSession session({expect(loadRequest), reply(integer(0)), expect(name), reply(integer(INT_MAX)), cut()});
  const std::size_t before = residentBytes();
  const Loaded loaded(session);
  EXPECT_LT(residentBytes(), before + costOfAClaim);
  EXPECT_TRUE(loaded.result == SLCONNECTION_ERROR || loaded.result == SLSYSTEM_ERROR) << loaded.result;
  EXPECT_EQ(session.device().Noop(), SLSYSTEM_ERROR);
}

TEST(DataTest, ALargeBlockGoesThereAndBack) {
  const Bytes block = noise(3000000, 8);
  const int size = static_cast<int>(block.size());
  OpenSession session({expect(text("80MSG_SLSaveDataToFile") + integers(size, 6)), reply(integer(0)), expect(name + block),
                       reply(integer(0)), expect(loadRequest), reply(integer(0)), expect(name), reply(integer(size) + block + integer(0))});
  EXPECT_EQ(SLSaveData(session.handle(), reinterpret_cast<const std::uint8_t*>(block.data()), size, "a.bin"), SLALL_OKAY);
  const Loaded loaded(session);
  EXPECT_EQ(loaded.result, SLALL_OKAY);
  ASSERT_EQ(loaded.size, size);
  EXPECT_TRUE(Bytes(loaded.data, loaded.data + size) == block);
}

TEST(DataTest, FreeingNothingSucceeds) { EXPECT_EQ(SLFreeData(nullptr), SLALL_OKAY); }

class SerialTest : public testing::Test {
 protected:
  static Script answer(const Bytes& reply_, int status = 0) {
    return {expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2500)), expect(text("200MSG_SLRS232Exec") + text("go")),
            reply(reply_ + integer(status)), expect(text("100MSG_SLNOOP"))};
  }
  int exec(const OpenSession& session, int size) { return SLExecRS232(session.handle(), "go", buffer_, size); }

  char buffer_[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
};

TEST_F(SerialTest, AReplyIsCutToWhatFits) {
  OpenSession session(answer(text("abcde")));
  EXPECT_EQ(exec(session, 4), SLALL_OKAY);
  EXPECT_EQ(Bytes(buffer_, 8), Bytes("abc\0####", 8));
  EXPECT_EQ(session.device().Noop(), SLALL_OKAY);
}

TEST_F(SerialTest, AReplyThatJustFitsStaysWhole) {
  OpenSession session(answer(text("abc"), 3));
  EXPECT_EQ(exec(session, 4), SLSYSTEM_ERROR) << "the status counts";
  EXPECT_EQ(Bytes(buffer_, 8), Bytes("abc\0####", 8));
}

TEST_F(SerialTest, OneByteHoldsTheTerminatingZero) {
  OpenSession session(answer(text("abc")));
  EXPECT_EQ(exec(session, 1), SLALL_OKAY);
  EXPECT_EQ(Bytes(buffer_, 8), Bytes("\0#######", 8));
}

TEST_F(SerialTest, WithoutRoomTheReplyIsLostAndTheStatusStaysUnread) {
  for (const int size : {0, -1, INT_MIN}) {
    OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2500)), expect(text("200MSG_SLRS232Exec") + text("go")),
                         reply(text("abc") + integer(9)), expect(text("21MSG_SLGetSerial"))});
    EXPECT_EQ(exec(session, size), SLBAD_PARAMETER);
    EXPECT_EQ(Bytes(buffer_, 8), Bytes(8, '#'));
    std::int32_t next = 0;
    EXPECT_EQ(session.device().GetSerial(&next), SLALL_OKAY);
    EXPECT_EQ(next, 9);
  }
}

TEST_F(SerialTest, LengthsThatNoHonestHeadSendsFail) {
  for (const char* field : {"-00005", "999999", "     0", "abc   "}) {
    SCOPED_TRACE(field);
    OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2500)), expect(text("200MSG_SLRS232Exec") + text("go")),
                         reply(std::string(field) + "abc"), cut()});
    const std::size_t before = residentBytes();
    EXPECT_EQ(exec(session, 8), SLCONNECTION_ERROR);
    EXPECT_LT(residentBytes(), before + costOfAClaim);
    EXPECT_EQ(Bytes(buffer_, 8), Bytes(8, '#'));
  }
}

TEST_F(SerialTest, ALengthWithLettersBehindItIsItsNumber) {
  OpenSession session(answer("  12ababcdefghijkl"));
  EXPECT_EQ(exec(session, 8), SLALL_OKAY);
  EXPECT_STREQ(buffer_, "abcdefg");
}

TEST(ProjectorCommandTest, NullResultsAreSkipped) {
  const Bytes request = text("310MSG_EXEC_PROJCMD") + integers(1, 2);
  OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(3300)), expect(request),
                       reply(integers(0x1FF, 2, 0x303, 0)), expect(request), reply(integers(1, 2, 3, 0))});
  std::uint8_t third = 0;
  EXPECT_EQ(SLExecProjCmd(session.handle(), 1, 2, nullptr, nullptr, &third), SLALL_OKAY);
  EXPECT_EQ(third, 3);
  EXPECT_EQ(SLExecProjCmd(session.handle(), 1, 2, nullptr, nullptr, nullptr), SLALL_OKAY);
}

TEST(ProjectorCommandTest, AnIncompleteReplyTouchesNoResult) {
  OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(3300)),
                       expect(text("310MSG_EXEC_PROJCMD") + integers(1, 2)), reply(integers(1, 2)), cut()});
  std::uint8_t results[3] = {42, 42, 42};
  EXPECT_EQ(SLExecProjCmd(session.handle(), 1, 2, &results[0], &results[1], &results[2]), SLCONNECTION_ERROR);
  EXPECT_EQ(Bytes(results, results + 3), Bytes(3, 42));
}

}  // namespace

}  // namespace fringix::test
