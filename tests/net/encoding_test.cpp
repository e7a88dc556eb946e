// The bytes that each primitive puts on the wire and takes from it.
#include <gtest/gtest.h>

#include <vector>

#include "net/command_channel.h"
#include "support/scripted_head.h"

namespace fringix::test {

namespace {

class EncodingTest : public testing::Test {
 protected:
  void connect(Script script) {
    head_ = std::make_unique<ScriptedHead>(std::move(script));
    ASSERT_EQ(channel_->Connect("127.0.0.1"), 0);
    channel_->socket()->setReceiveTimeout(5);
  }
  Bytes sent() {
    channel_.reset();
    return head_->received();
  }

  std::unique_ptr<ScriptedHead> head_;
  std::unique_ptr<CommandChannel> channel_ = std::make_unique<CommandChannel>();
};

struct TextCase {
  std::size_t length;
  const char* field;
};

class TextLengthTest : public EncodingTest, public testing::WithParamInterface<TextCase> {};

TEST_P(TextLengthTest, IsSixCharactersRightAligned) {
  connect({});
  const std::string text(GetParam().length, 'x');
  EXPECT_EQ(channel_->SendString(text), 0);
  EXPECT_EQ(sent(), GetParam().field + text);
}

INSTANTIATE_TEST_SUITE_P(Lengths, TextLengthTest,
                         testing::Values(TextCase{0, "     0"}, TextCase{5, "     5"}, TextCase{13, "    13"}, TextCase{12345, " 12345"},
                                         TextCase{123456, "123456"}, TextCase{999999, "999999"}));

TEST_F(EncodingTest, ATextTooLongForTheFieldIsRefusedBeforeAByteIsSent) {
  connect({});
  EXPECT_EQ(channel_->SendString(std::string(1000000, 'x')), -1);
  EXPECT_EQ(sent(), Bytes());
}

TEST_F(EncodingTest, IntegersAreLittleEndian) {
  connect({});
  EXPECT_EQ(channel_->SendInt(3300), 0);
  EXPECT_EQ(channel_->SendInt(-2), 0);
  EXPECT_EQ(readable(sent()), "\\xE4\\x0C\\x00\\x00\\xFE\\xFF\\xFF\\xFF");
}

TEST_F(EncodingTest, ABlockIsTheSameBytesAsItsIntegers) {
  connect({});
  EXPECT_EQ(channel_->SendBlock(1, -1, 3300), 0);
  EXPECT_EQ(readable(sent()), readable(integers(1, -1, 3300)));
}

TEST_F(EncodingTest, SendingNoBytesSucceedsAndSendsNothing) {
  connect({});
  EXPECT_EQ(channel_->SendBytes(nullptr, 0), 0);
  EXPECT_EQ(sent(), Bytes());
}

TEST_F(EncodingTest, ALargeBlockArrivesInFull) {
  const Bytes large = noise(5000000, 3);
  connect({});
  EXPECT_EQ(channel_->SendBytes(large.data(), large.size()), 0);
  EXPECT_TRUE(sent() == large);
}

TEST_F(EncodingTest, EverythingIsReceivedByteByByte) {
  connect({dribble(integer(-77) + text("hello") + "block")});
  std::int32_t value = 0;
  std::string received;
  char block[5];
  EXPECT_EQ(channel_->ReceiveInt(&value), 0);
  EXPECT_EQ(value, -77);
  EXPECT_EQ(channel_->ReceiveString(&received), 0);
  EXPECT_EQ(received, "hello");
  EXPECT_EQ(channel_->ReceiveBytes(block, sizeof block), 0);
  EXPECT_EQ(std::string(block, 5), "block");
}

TEST_F(EncodingTest, ABlockAcrossChunksArrivesUnchanged) {
  for (const std::size_t size : {std::size_t{8095}, std::size_t{8096}, std::size_t{8097}, std::size_t{3 * 8096 + 5}}) {
    const Bytes sentBlock = noise(size, static_cast<std::uint32_t>(size));
    ScriptedHead head({reply(sentBlock)}, "127.0.0.2");
    CommandChannel channel;
    ASSERT_EQ(channel.Connect("127.0.0.2"), 0);
    Bytes block(size, '\0');
    EXPECT_EQ(channel.ReceiveBytes(block.data(), size), 0);
    EXPECT_TRUE(block == sentBlock);
  }
}

TEST_F(EncodingTest, ReceivingNothingFails) {
  connect({reply(text("") + "more")});
  std::string received;
  char byte = 0;
  EXPECT_EQ(channel_->ReceiveString(&received), -1);
  EXPECT_EQ(channel_->ReceiveBytes(&byte, 0), -1);
  EXPECT_EQ(channel_->ReceiveBytes(&byte, 1), 0);
  EXPECT_EQ(byte, 'm');
}

struct LengthField {
  const char* field;
  int result;
  const char* text;
};

class LengthFieldTest : public EncodingTest, public testing::WithParamInterface<LengthField> {};

TEST_P(LengthFieldTest, IsReadAsAtoiReadsIt) {
  connect({reply(std::string(GetParam().field) + "abcdefghijklmnopqrst"), cut()});
  std::string received;
  EXPECT_EQ(channel_->ReceiveString(&received), GetParam().result);
  if (GetParam().result == 0) {
    EXPECT_EQ(received, GetParam().text);
  }
}

INSTANTIATE_TEST_SUITE_P(Fields, LengthFieldTest,
                         testing::Values(LengthField{"     3", 0, "abc"}, LengthField{"000003", 0, "abc"}, LengthField{"3     ", 0, "abc"},
                                         LengthField{"  12ab", 0, "abcdefghijkl"}, LengthField{"    +2", 0, "ab"},
                                         LengthField{"abc   ", -1, ""}, LengthField{"      ", -1, ""}, LengthField{"-00005", -1, ""},
                                         LengthField{"999999", -1, ""}));

TEST_F(EncodingTest, AnyReplyCutShortFails) {
  const Bytes whole = integer(1) + text("hello") + "block";
  for (std::size_t offset = 0; offset < whole.size(); ++offset) {
    SCOPED_TRACE(offset);
    ScriptedHead head({reply(whole.substr(0, offset)), cut()}, "127.0.0.2");
    CommandChannel channel;
    ASSERT_EQ(channel.Connect("127.0.0.2"), 0);
    std::int32_t value = 0;
    std::string received;
    char block[5];
    const bool complete = channel.ReceiveInt(&value) == 0 && channel.ReceiveString(&received) == 0 && channel.ReceiveBytes(block, 5) == 0;
    EXPECT_FALSE(complete);
  }
}

}  // namespace

}  // namespace fringix::test
