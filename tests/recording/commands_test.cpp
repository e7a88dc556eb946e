// What client and head said, taken apart into commands.
#include <gtest/gtest.h>

#include "recording/commands.h"
#include "support/wire.h"

namespace fringix::recording {
namespace {

using protocol::Sender;
using test::integer;
using test::integers;
using test::text;
using Bytes = std::string;

constexpr Sender client = Sender::client;
constexpr Sender head = Sender::head;

struct Turn {
  Sender sender;
  Bytes bytes;
};

const std::vector<Turn> opening = {
    {head, integer(3300)}, {client, integer(3300) + text("40MSG_SLGetMaxImageSize")}, {head, integers(8, 4, 0)}};

// A line for each command: its name, its fields, and what else there is to say.
std::string describe(const RecordedCommand& command) {
  std::string line = command.name;
  for (const FieldValue& value : command.fields) {
    line += " " + value.field->name + "=" +
            (protocol::isNumber(value.field->type) ? std::to_string(value.number) : "[" + std::to_string(value.size) + "]");
  }
  if (!command.complete) line += " incomplete";
  if (command.surplus > 0) line += " surplus " + std::to_string(command.surplus);
  return line;
}

// In pieces of `step` bytes.
std::vector<std::string> assembled(const std::vector<Turn>& turns, std::size_t step = 1 << 20) {
  Assembler assembler(1);
  std::uint64_t time = 0;
  std::uint64_t all = 0;
  for (const Turn& turn : turns) {
    for (std::size_t i = 0; i < turn.bytes.size(); i += step)
      assembler.say(turn.sender, ++time, std::string_view(turn.bytes).substr(i, step));
    all += turn.bytes.size();
  }
  assembler.end();
  std::vector<std::string> lines;
  std::uint64_t offsets[2] = {0, 0};
  while (const auto command = assembler.next()) {
    lines.push_back(describe(*command));
    for (const Sender sender : {client, head}) {
      EXPECT_EQ(command->by(sender).offset, offsets[static_cast<int>(sender)]) << lines.back();
      offsets[static_cast<int>(sender)] += command->by(sender).bytes.size();
    }
  }
  EXPECT_EQ(offsets[0] + offsets[1], all) << "every byte belongs to a command";
  return lines;
}

std::vector<std::string> behindOpening(std::vector<Turn> turns, std::size_t step = 1 << 20) {
  turns.insert(turns.begin(), opening.begin(), opening.end());
  std::vector<std::string> lines = assembled(turns, step);
  EXPECT_EQ(lines.at(0), "greeting greeting=3300 client=3300");
  EXPECT_EQ(lines.at(1).substr(0, 74), "40MSG_SLGetMaxImageSize camera.width=8 camera.height=4 status=0");
  lines.erase(lines.begin(), lines.begin() + 2);
  return lines;
}

using Lines = std::vector<std::string>;

const std::vector<Turn> session = {{client, text("12MSG_SLSeqPut") + integers(1, 0, 2, 2, 6) + test::noise(12)},
                                   {head, integer(0)},
                                   {client, text("100MSG_SLNOOP") + text("41MSG_SLGetLiveImage")},
                                   {head, test::noise(32)},
                                   {client, text("200MSG_SLRS232Exec") + text("hello")},
                                   {head, text("world!")},
                                   {client, text("ByeBye=")}};
const Lines sessionLines = {"12MSG_SLSeqPut sequence=1 image=0 width=2 height=2 stride=6 pixels=[12] status=0", "100MSG_SLNOOP",
                            "41MSG_SLGetLiveImage picture=[32]", "200MSG_SLRS232Exec request=[11] reply=[12]", "ByeBye="};

TEST(CommandsOfARecording, AreFoundHoweverTheBytesCome) {
  const Lines lines = behindOpening(session);
  EXPECT_EQ(lines.size(), sessionLines.size());
  EXPECT_EQ(lines.at(0), sessionLines[0]);
  EXPECT_EQ(lines.at(2), sessionLines[2]);
  for (std::size_t step = 1; step < 40; ++step) EXPECT_EQ(behindOpening(session, step), lines) << step;
}

TEST(CommandsOfARecording, EndWhereTheirReplyEndsThem) {
  const std::vector<Turn> turns = {{client, text("81MSG_SLReadDataFromFile") + integer(2)},
                                   {head, integer(-3)},
                                   {client, text("81MSG_SLReadDataFromFile") + integer(2)},
                                   {head, integer(0)},
                                   {client, Bytes("a\0", 2)},
                                   {head, integer(0)},
                                   {client, text("81MSG_SLReadDataFromFile") + integer(2)},
                                   {head, integer(0)},
                                   {client, Bytes("a\0", 2)},
                                   {head, integer(3) + "abc" + integer(0)}};
  const Lines expected = {"81MSG_SLReadDataFromFile nameSize=2 answer=-3", "81MSG_SLReadDataFromFile nameSize=2 answer=0 name=[2] size=0",
                          "81MSG_SLReadDataFromFile nameSize=2 answer=0 name=[2] size=3 data=[3] status=0"};
  EXPECT_EQ(behindOpening(turns), expected);
}

TEST(CommandsOfARecording, WhatTheHeadSaysTooMuchBelongsToTheCommandBefore) {
  const std::vector<Turn> turns = {
      {client, text("21MSG_SLGetSerial")}, {head, integer(5) + "xyz"}, {client, text("21MSG_SLGetSerial")}, {head, integer(5)}};
  EXPECT_EQ(behindOpening(turns), (Lines{"21MSG_SLGetSerial serial=5 surplus 3", "21MSG_SLGetSerial serial=5"}));
}

TEST(CommandsOfARecording, AReplyThatIsCutOffIsNotComplete) {
  const std::vector<Turn> turns = {{client, text("41MSG_SLGetLiveImage")}, {head, test::noise(31)}};
  EXPECT_EQ(behindOpening(turns), Lines{"41MSG_SLGetLiveImage incomplete"});
}

TEST(CommandsOfARecording, AClientMayBeAheadOfTheHead) {
  const std::vector<Turn> turns = {
      {client, text("80MSG_SLSaveDataToFile") + integers(3, 2) + Bytes("a\0", 2) + "abc" + text("21MSG_SLGetSerial")},
      {head, integers(0, 0)},
      {head, integer(5)}};
  EXPECT_EQ(behindOpening(turns),
            (Lines{"80MSG_SLSaveDataToFile size=3 nameSize=2 answer=0 name=[2] data=[3] status=0", "21MSG_SLGetSerial serial=5"}));
  EXPECT_EQ(behindOpening({{client, text("21MSG_SLGetSerial") + text("ByeBye=")}}), (Lines{"21MSG_SLGetSerial incomplete", "ByeBye="}));
}

TEST(CommandsOfARecording, WhatCannotBeReadHoldsAllThatFollows) {
  const std::vector<Turn> behind = {{head, "what?"}, {client, text("21MSG_SLGetSerial")}};
  for (const Bytes& nonsense : {text("999MSG_SLNothing"), Bytes("GET / HTTP/1.1\r\n"), Bytes("999999")}) {
    std::vector<Turn> turns = {{client, nonsense}};
    turns.insert(turns.end(), behind.begin(), behind.end());
    EXPECT_EQ(behindOpening(turns), Lines{" incomplete"}) << nonsense;
  }
  const std::vector<Turn> huge = {{client, text("290MSG_SLSetMask") + integers(0, 0x7FFFFFFF, 0x7FFFFFFF) + "x"}, {head, integer(0)}};
  EXPECT_EQ(behindOpening(huge).size(), 1U);
}

TEST(CommandsOfARecording, NothingSaidIsNoCommand) { EXPECT_EQ(assembled({}), Lines{}); }

}  // namespace
}  // namespace fringix::recording
