// Every example of conversations/ with its exchange broken at every byte and with every field at its borders, on a network in memory. What
// has to come of it tells SecondReading.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <set>

#include "fringix/fringix.h"
#include "fuzz/platform/network.h"
#include "support/export_list.h"
#include "sweep/second_reading.h"

namespace fringix::test {

namespace {

using fuzz::End;
using fuzz::network;
using protocol::Sender;
using protocol::Type;

constexpr std::array ends = {End::closed, End::reset, End::silence};

Bytes greeting() { return integers(1, 8, 4, 0, 6, 5, 0); }
std::size_t greetingRoom() { return 4 + text("40MSG_SLGetMaxImageSize").size() + text("45MSG_SLGetProjDimension").size(); }

Bytes answersOf(const EncodedConversation& conversation) {
  Bytes answers;
  for (const EncodedExchange& exchange : conversation.exchanges) {
    for (const EncodedField& field : exchange.fields) answers += field.field->sender == Sender::head ? field.bytes : Bytes();
  }
  return answers;
}

Bytes sentIn(const EncodedConversation& conversation) {
  Bytes sent;
  for (const EncodedExchange& exchange : conversation.exchanges) sent += exchange.sent();
  return sent;
}

class ReplySweepTest : public testing::Test {
 protected:
  ~ReplySweepTest() override { std::printf("%zu cases\n", cases_); }

  template <class Sweep>
  void forEachExample(Sweep sweep) {
    for (const protocol::Command& command : protocol::CommandTable::ofTheProtocol().commands()) {
      if (findCall(command.name) == nullptr) continue;
      for (const protocol::Example& example : command.examples) {
        SCOPED_TRACE(command.name + ": " + example.title);
        sweep(encode(example, headOfTheExamples()));
        if (HasFailure()) return;  // one is enough to look at
      }
    }
  }

  // The conversation with a head that answers with these bytes.
  void play(const EncodedConversation& conversation, const Bytes& answers, End end, std::size_t atOnce = fuzz::unlimited) {
    const fuzz::FreshNetwork fresh;
    begin(answers, end);
    network().connection.atOnce = atOnce;
    SecondReading reading(answers);
    const int handle = open();
    for (const EncodedExchange& exchange : conversation.exchanges) {
      if (exchange.called) expectCall(handle, exchange, reading.call(exchange));
    }
    finish(handle, conversation, reading.connected());
  }

  void begin(const Bytes& answers, End end) {
    ++cases_;
    network().connection.arriving = greeting() + answers;
    network().connection.end = end;
  }

  static int open() {
    int handle = -1;
    EXPECT_EQ(SLDevAlloc("127.0.0.1", &handle), SLALL_OKAY);
    return handle;
  }

  static void expectCall(int handle, const EncodedExchange& exchange, const Outcome& expected) {
    SCOPED_TRACE(exchange.command->name);
    Call call(handle, expected.numbers, expected.others);
    const int result = findCall(exchange.command->name)->run(call);
    if (!(expected.mayHide && result == SLVERSION_TOO_OLD)) {
      EXPECT_EQ(result, expected.result);
    }
    if (expected.isTold) call.expectOutputs();
  }

  // A session whose connection is gone knows nothing of its head any more, and stays so.
  static void finish(int handle, const EncodedConversation& conversation, bool connected, int freeing = SLALL_OKAY) {
    const EncodedExchange& last = conversation.exchanges.back();
    std::uint32_t width = 0;
    EXPECT_EQ(SLGetCameraSize(handle, &width, nullptr), SLALL_OKAY);
    EXPECT_EQ(width, connected ? 8U : 0xFFFFFFFFU);
    EXPECT_EQ(network().open, connected ? 1U : 0U);
    if (!connected) expectCall(handle, last, {SecondReading::withoutConnection(last), false, false, last.numbers, last.others});
    EXPECT_EQ(SLDevFree(handle), freeing);
    EXPECT_EQ(network().open, 0U);
    EXPECT_FALSE(network().waitedForEver);
  }

  std::size_t cases_ = 0;
};

TEST_F(ReplySweepTest, EndsAfterEveryByte) {
  forEachExample([&](const EncodedConversation& conversation) {
    const Bytes answers = answersOf(conversation);
    for (std::size_t offset = 0; offset <= answers.size() && !HasFailure(); ++offset) {
      SCOPED_TRACE(offset);
      for (const End end : ends) play(conversation, answers.substr(0, offset), end);
    }
  });
}

TEST_F(ReplySweepTest, ComesInPiecesOfEverySize) {
  forEachExample([&](const EncodedConversation& conversation) {
    const Bytes answers = answersOf(conversation);
    for (std::size_t size = 1; size <= answers.size() && !HasFailure(); ++size) play(conversation, answers, End::closed, size);
  });
}

// Where a connection breaks while a request leaves: after so many bytes of all requests, and of the farewell.
class RequestSweepTest : public ReplySweepTest {
 protected:
  void playWithRoom(const EncodedConversation& conversation, std::size_t room) {
    const fuzz::FreshNetwork fresh;
    begin(answersOf(conversation), End::silence);
    network().connection.room = greetingRoom() + room;
    connected_ = true;
    SecondReading reading(answersOf(conversation));
    const int handle = open();
    std::size_t sent = 0;
    bool asksVersion = false;
    for (const EncodedExchange& exchange : conversation.exchanges) {
      asksVersion = asksVersion || (!exchange.called && sent <= room && exchange.command->name == "20MSG_SLGetProtocolVersion");
      sent += exchange.sent().size();
      if (!exchange.called) continue;
      expectCall(handle, exchange, sent <= room ? reading.call(exchange) : broken(exchange, asksVersion));
      connected_ = sent <= room;
      asksVersion = false;
    }
    const bool saysGoodbye = room >= sent + text("ByeBye=").size();
    finish(handle, conversation, connected_, !connected_ || saysGoodbye ? SLALL_OKAY : SLCONNECTION_ERROR);
  }

 private:
  Outcome broken(const EncodedExchange& exchange, bool asksVersion) const {
    const int result = connected_ ? SLCONNECTION_ERROR : SecondReading::withoutConnection(exchange);
    return {result, asksVersion, false, exchange.numbers, exchange.others};
  }

  bool connected_ = true;
};

TEST_F(RequestSweepTest, BreaksAfterEveryByte) {
  forEachExample([&](const EncodedConversation& conversation) {
    const std::size_t last = sentIn(conversation).size() + text("ByeBye=").size();
    for (std::size_t room = 0; room <= last && !HasFailure(); ++room) {
      SCOPED_TRACE(room);
      playWithRoom(conversation, room);
    }
  });
}

std::vector<Bytes> bordersOf(const Bytes& number) {
  constexpr auto most = std::numeric_limits<std::int32_t>::max();
  constexpr auto least = std::numeric_limits<std::int32_t>::min();
  const auto value = static_cast<std::uint32_t>(protocol::decodeInteger(number));
  std::vector<Bytes> borders{integer(value + 1), integer(value - 1)};
  for (const int border : {0, 1, -1, 2, -2, least, least + 1, most - 1, most, 255, 256, 65536, 1 << 20, (1 << 20) + 1})
    borders.push_back(integer(border));
  return borders;
}

// Of texts the length is changed, of pictures what tells whether there is one.
std::vector<Bytes> bordersOf(const EncodedField& field) {
  if (isNumber(field.field->type)) return bordersOf(field.bytes);
  std::vector<Bytes> borders;
  if (field.field->type == Type::text) {
    const Bytes characters = field.bytes.substr(6);
    for (const char* length :
         {"     0", "     1", "    -1", "999999", "-99999", "      ", "abcdef", "000003", "     2", "     4", "   3.5", "0x0003"})
      borders.push_back(length + characters);
  } else {
    for (const char* begin : {"\x00\xFF", "\x00\x00", "\xFF\x00", "\xFF\xFF", "\x01\xFF", "\x00\xFE"}) {
      Bytes bytes = field.bytes;
      bytes.replace(0, std::min<std::size_t>(2, bytes.size()), Bytes(begin, std::min<std::size_t>(2, bytes.size())));
      borders.push_back(bytes);
    }
  }
  return borders;
}

// A head that accepts what the example has it refuse would be sent a block that the call does not have.
bool mayBe(const EncodedExchange& exchange, const EncodedField& field, const Bytes& bytes) {
  const bool isEnd = &field == &exchange.fields.back() && exchange.fields.size() < exchange.command->fields.size();
  return !(isEnd && field.field->type == Type::answer && protocol::decodeInteger(bytes) == 0);
}

class FieldSweepTest : public ReplySweepTest {
 protected:
  // Plays each example with each field of the head in each of its variants.
  template <class Variants>
  void forEachVariant(Variants variantsOf) {
    forEachExample([&](const EncodedConversation& conversation) {
      const Bytes answers = answersOf(conversation);
      std::size_t place = 0;
      for (const EncodedExchange& exchange : conversation.exchanges) {
        for (const EncodedField& field : exchange.fields) {
          if (field.field->sender == Sender::client) continue;
          SCOPED_TRACE(field.field->name);
          for (const Bytes& bytes : variantsOf(field)) {
            SCOPED_TRACE(readable(bytes));
            if (mayBe(exchange, field, bytes)) play(conversation, Bytes(answers).replace(place, field.bytes.size(), bytes), End::closed);
          }
          place += field.bytes.size();
        }
      }
    });
  }
};

TEST_F(FieldSweepTest, HasEveryFieldAtItsBorders) {
  forEachVariant([](const EncodedField& field) { return bordersOf(field); });
}

TEST_F(FieldSweepTest, HasEveryByteChanged) {
  forEachVariant([](const EncodedField& field) {
    std::vector<Bytes> variants;
    for (std::size_t i = 0; i < field.bytes.size(); ++i) {
      for (const int change : {1, 2, 0x10, 0x40, 0x80, 0xFF}) {
        variants.push_back(field.bytes);
        variants.back()[i] = static_cast<char>(variants.back()[i] ^ change);
      }
    }
    return variants;
  });
}

TEST(SweepTest, MeetsEveryExportThatTalksToAHead) {
  std::set<std::string> names{"SLDevAlloc", "SLDevAllocBySerial", "SLDevFree",
                              "SLGetDeviceKeyListSize",  // here and in OpeningSweepTest
                                                         // these talk to nobody, or show what others got
                              "SLErrorcodeToChar", "SLFreeData", "SLGetCameraSize", "SLGetDeviceKeyListEntry", "SLGetDeviceKeyListEntryEx",
                              "SLGetProjectorSize", "SLRegisterEventhandler", "SLRegisterGPIOCallback", "SLRegisterGPIOHandle",
                              "SLSetDebugFlag", "SLShowDeviceDialog", "SLUnregisterEventhandler", "QORFringixVersion"};
  for (const protocol::Command& command : protocol::CommandTable::ofTheProtocol().commands()) {
    if (findCall(command.name) != nullptr) names.insert(command.function);
  }
  for (const std::string& name : readExportList(EXPORT_LIST)) EXPECT_EQ(names.count(name), 1U) << name;
}

}  // namespace

}  // namespace fringix::test
