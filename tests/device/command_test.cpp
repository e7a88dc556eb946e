// What holds for every command, whatever it does: exact bytes, outputs, and each way in which its exchange can break.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

#include "device/command_table.h"
#include "fringix/fringix.h"

namespace fringix::test {

std::ostream& operator<<(std::ostream& out, const CommandCase& row) { return out << row.name; }

namespace {

constexpr std::uint8_t guard = 0xA5;

// The place that a command writes to, with guard bytes all around it.
struct Output {
  static constexpr std::size_t margin = 64;
  static constexpr std::size_t size = 512;
  alignas(8) std::array<std::uint8_t, margin + size> bytes;

  Output() { bytes.fill(guard); }
  std::uint8_t* place() { return bytes.data() + margin; }
  // These bytes and nothing else.
  void expect(const Bytes& written) const {
    const auto isGuard = [](std::uint8_t byte) { return byte == guard; };
    const auto begin = bytes.begin() + margin;
    const auto end = begin + static_cast<std::ptrdiff_t>(written.size());
    EXPECT_EQ(readable(Bytes(begin, end)), readable(written));
    EXPECT_TRUE(std::all_of(bytes.begin(), begin, isGuard)) << "written before the output";
    EXPECT_TRUE(std::all_of(end, bytes.end(), isGuard)) << "written behind " << readable(written);
  }
};

// Where an exchange of two turns is broken. Each place takes a session on the system's sockets, and within a text or a number they are much
// alike: `./run sweep` looks at all of them.
bool isBrokenAt(std::size_t offset, std::size_t firstTurn, std::size_t all) {
  static const bool everywhere = std::getenv("FRINGIX_EVERY_BYTE") != nullptr;
  const bool endsATurn = offset + 1 == firstTurn || offset + 1 == all;
  return everywhere || endsATurn || offset == firstTurn || offset % 8 == 0;
}

Script versionFetch(int version) { return {expect(text("20MSG_SLGetProtocolVersion")), reply(integer(version))}; }

class CommandTest : public testing::TestWithParam<CommandCase> {
 protected:
  const CommandCase& row() const { return GetParam(); }
  int call(OpenSession& session) {
    output_ = {};
    return row().call(session, output_.place());
  }

  // What comes before the command itself, and what that makes the client send.
  Script gate() const { return row().minimumVersion > 0 ? versionFetch(row().minimumVersion) : Script{}; }
  Bytes gateBytes() const { return row().minimumVersion > 0 ? text("20MSG_SLGetProtocolVersion") : Bytes{}; }

  Bytes lastReply(int status = 0) const { return row().reply + (row().statusWord == StatusWord::follows ? integer(status) : Bytes{}); }
  Bytes allSent() const { return row().before.sent + row().sent; }
  Bytes allReplies() const { return row().before.reply + lastReply(); }

  Script firstTurn() const { return row().before.sent.empty() ? Script{} : Script{expect(row().before.sent), reply(row().before.reply)}; }
  Script conversation(int status = 0) const { return gate() + firstTurn() + Script{expect(row().sent), reply(lastReply(status))}; }

  // A head that breaks off after so many bytes of its replies.
  Script cutInReply(std::size_t offset) const {
    const Turn& before = row().before;
    if (offset < before.reply.size()) return gate() + Script{expect(before.sent), reply(before.reply.substr(0, offset)), cut()};
    return gate() + firstTurn() + Script{expect(row().sent), reply(lastReply().substr(0, offset - before.reply.size())), cut()};
  }

  // A head that resets the connection after so many bytes of the client.
  Script resetInRequest(std::size_t offset) const {
    const Turn& before = row().before;
    if (offset < before.sent.size()) return gate() + Script{expect(before.sent.substr(0, offset)), reset()};
    return gate() + firstTurn() + Script{expect(row().sent.substr(0, offset - before.sent.size())), reset()};
  }

  // What a connection that breaks leaves at the output, after so many bytes of all replies or of all requests.
  Bytes leftByCut(std::size_t offset) const {
    if (row().leftByBreak) return row().leftByBreak(offset);
    return offset < row().before.reply.size() + row().reply.size() ? Bytes{} : row().written;
  }
  Bytes leftByReset(std::size_t offset) const { return leftByCut(offset < row().before.sent.size() ? 0 : row().before.reply.size()); }

  void expectFailed(OpenSession& session) {
    EXPECT_EQ(call(session), row().withoutConnection) << "a session that has failed stays failed";
    output_.expect(row().writtenOffline);
    EXPECT_EQ(session.device().GetCameraWidth(), -1);
    EXPECT_EQ(session.free(), SLALL_OKAY);
  }

  Output output_;
};

TEST_P(CommandTest, SendsItsBytesAndTakesTheReply) {
  OpenSession session(conversation());
  EXPECT_EQ(call(session), SLALL_OKAY);
  EXPECT_EQ(readable(session.sent()), readable(gateBytes() + allSent()));
  output_.expect(row().written);
}

TEST_P(CommandTest, TakesAReplyThatArrivesByteByByte) {
  OpenSession session(gate() + firstTurn() + Script{expect(row().sent), dribble(lastReply())});
  EXPECT_EQ(call(session), SLALL_OKAY);
  output_.expect(row().written);
}

TEST_P(CommandTest, FailsForGoodWhenTheReplyIsCutAnywhere) {
  for (std::size_t offset = 0; offset < allReplies().size(); ++offset) {
    if (!isBrokenAt(offset, row().before.reply.size(), allReplies().size())) continue;
    SCOPED_TRACE(offset);
    OpenSession session(cutInReply(offset));
    EXPECT_EQ(call(session), SLCONNECTION_ERROR);
    output_.expect(leftByCut(offset));
    expectFailed(session);
  }
}

TEST_P(CommandTest, FailsForGoodWhenTheConnectionIsResetInsideTheRequest) {
  for (std::size_t offset = 0; offset < allSent().size(); ++offset) {
    if (!isBrokenAt(offset, row().before.sent.size(), allSent().size())) continue;
    SCOPED_TRACE(offset);
    OpenSession session(resetInRequest(offset));
    const int result = call(session);
    // Without a reply to wait for, a command whose last bytes reached the system's buffer cannot know better.
    if (allReplies().empty() && result == SLALL_OKAY) continue;
    EXPECT_EQ(result, SLCONNECTION_ERROR);
    output_.expect(leftByReset(offset));
    expectFailed(session);
  }
}

TEST_P(CommandTest, FailsWithoutAConnection) {
  OpenSession session({reset()});
  ASSERT_EQ(session.device().GetSerial(nullptr), SLCONNECTION_ERROR);
  expectFailed(session);
}

class StatusWordTest : public CommandTest {};

TEST_P(StatusWordTest, TurnsEveryBadStatusIntoASystemError) {
  for (const int status : {1, -1, -20, 0x7FFFFFFF}) {
    SCOPED_TRACE(status);
    OpenSession session(conversation(status));
    EXPECT_EQ(call(session), SLSYSTEM_ERROR);
    output_.expect(row().written);
    EXPECT_EQ(session.device().Noop(), SLALL_OKAY) << "the session stays usable";
  }
}

class VersionGateTest : public CommandTest {};

TEST_P(VersionGateTest, IsRefusedByAHeadThatIsOneVersionTooOld) {
  OpenSession session(versionFetch(row().minimumVersion - 1));
  EXPECT_EQ(call(session), SLVERSION_TOO_OLD);
  EXPECT_EQ(call(session), SLVERSION_TOO_OLD);
  EXPECT_EQ(readable(session.sent()), readable(text("20MSG_SLGetProtocolVersion"))) << "asked once, and nothing else was sent";
  output_.expect({});
}

TEST_P(VersionGateTest, FailsWhenTheVersionCannotBeFetched) {
  for (std::size_t offset = 0; offset < 4; ++offset) {
    SCOPED_TRACE(offset);
    OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(3300).substr(0, offset)), cut()});
    EXPECT_EQ(call(session), row().whenVersionFails);
    output_.expect({});
    expectFailed(session);
  }
}

std::vector<CommandCase> rowsWhere(bool (*wanted)(const CommandCase&)) {
  std::vector<CommandCase> rows;
  for (const auto& family :
       {sessionCommands(), sequenceCommands(), projectionCommands(), pictureCommands(), settingsCommands(), dataCommands()}) {
    std::copy_if(family.begin(), family.end(), std::back_inserter(rows), wanted);
  }
  return rows;
}

bool hasStatusWord(const CommandCase& row) { return row.statusWord == StatusWord::follows; }
bool hasMinimumVersion(const CommandCase& row) { return row.minimumVersion > 0; }
std::string nameOf(const testing::TestParamInfo<CommandCase>& test) { return test.param.name; }

INSTANTIATE_TEST_SUITE_P(Session, CommandTest, testing::ValuesIn(sessionCommands()), nameOf);
INSTANTIATE_TEST_SUITE_P(Sequences, CommandTest, testing::ValuesIn(sequenceCommands()), nameOf);
INSTANTIATE_TEST_SUITE_P(Projection, CommandTest, testing::ValuesIn(projectionCommands()), nameOf);
INSTANTIATE_TEST_SUITE_P(Pictures, CommandTest, testing::ValuesIn(pictureCommands()), nameOf);
INSTANTIATE_TEST_SUITE_P(Settings, CommandTest, testing::ValuesIn(settingsCommands()), nameOf);
INSTANTIATE_TEST_SUITE_P(Data, CommandTest, testing::ValuesIn(dataCommands()), nameOf);
INSTANTIATE_TEST_SUITE_P(Commands, StatusWordTest, testing::ValuesIn(rowsWhere(hasStatusWord)), nameOf);
INSTANTIATE_TEST_SUITE_P(Commands, VersionGateTest, testing::ValuesIn(rowsWhere(hasMinimumVersion)), nameOf);

}  // namespace

}  // namespace fringix::test
