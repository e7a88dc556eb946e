// What a head's reply says, for every text that a datagram can hold.
#include "discovery/announce_reply.h"

#include <gtest/gtest.h>

#include <array>
#include <locale>
#include <ostream>
#include <random>
#include <sstream>

namespace fringix {

void PrintTo(const AnnounceReply& reply, std::ostream* out) {
  *out << reply.serial << ", model " << reply.modelCode << ", " << reply.info1 << ' ' << reply.info2 << ' ' << reply.info3 << ' '
       << reply.info4 << ' ' << reply.info5 << ' ' << reply.info6 << ' ' << reply.info7;
}

namespace test {

namespace {

using namespace std::string_literals;

AnnounceReply withSerial(std::int32_t serial) { return {.serial = serial}; }

TEST(AnnounceReplyTest, NumbersStandAtTheirPlaces) {
  EXPECT_EQ(parseAnnounceReply("S 1234 M 1 I 5 6 A 7 B 8 C 9 D 10 E 11"), (AnnounceReply{1234, 1, 5, 6, 7, 8, 9, 10, 11}));
}

TEST(AnnounceReplyTest, WhatIsMissingStaysUnknown) {
  EXPECT_EQ(AnnounceReply{}, (AnnounceReply{-1, -1, -1, -1, -1, -1, -1, -1, -1}));
  EXPECT_EQ(parseAnnounceReply("S 1234"), withSerial(1234));
  EXPECT_EQ(parseAnnounceReply(""), AnnounceReply{});
  EXPECT_EQ(parseAnnounceReply("   "), AnnounceReply{});
  EXPECT_EQ(parseAnnounceReply("S"), AnnounceReply{});
  EXPECT_EQ(parseAnnounceReply("S 1 M 2 I 3"), (AnnounceReply{.serial = 1, .modelCode = 2, .info1 = 3}));
  EXPECT_EQ(parseAnnounceReply("S 1 M 2 I 3 A 4 B 5"), (AnnounceReply{.serial = 1, .modelCode = 2, .info1 = 3})) << "no label before info2";
}

TEST(AnnounceReplyTest, TheFirstTokenIsALabelWhateverItIs) {
  EXPECT_EQ(parseAnnounceReply("1234 S 1"), AnnounceReply{});
  EXPECT_EQ(parseAnnounceReply("1234 5 6 7"), (AnnounceReply{.serial = 5, .modelCode = 7}));
}

TEST(AnnounceReplyTest, TextBehindTheLastNumberDoesNotCount) {
  EXPECT_EQ(parseAnnounceReply("S 1 M 2 I 3 4 A 5 B 6 C 7 D 8 E 9 and more 10"), (AnnounceReply{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(AnnounceReplyTest, ANulEndsTheText) {
  EXPECT_EQ(parseAnnounceReply("S 12\0 M 1"s), withSerial(12));
  EXPECT_EQ(parseAnnounceReply("S 12\00034 M 1"s), withSerial(12));
  EXPECT_EQ(parseAnnounceReply("\0S 12"s), AnnounceReply{});
}

TEST(AnnounceReplyTest, AnyWhiteSpaceSeparates) {
  EXPECT_EQ(parseAnnounceReply("\t S\v1\r\nM\f2"), (AnnounceReply{.serial = 1, .modelCode = 2}));
}

TEST(AnnounceReplyTest, NumbersMayHaveASign) {
  EXPECT_EQ(parseAnnounceReply("S +7 M -2"), (AnnounceReply{.serial = 7, .modelCode = -2}));
  for (const char* text : {"S + 7", "S - 7", "S +-7", "S -+7", "S ++7", "S --7", "S +", "S -"}) {
    EXPECT_EQ(parseAnnounceReply(text), AnnounceReply{}) << text;
  }
}

TEST(AnnounceReplyTest, ANumberEndsWhereItsDigitsEnd) {
  EXPECT_EQ(parseAnnounceReply("S 12abc 3 I 4 5"), (AnnounceReply{12, 3, 4, 5}));
  EXPECT_EQ(parseAnnounceReply("S 0x10 3"), (AnnounceReply{.serial = 0, .modelCode = 3}));
  EXPECT_EQ(parseAnnounceReply("S 010 M 1.5 2"), (AnnounceReply{.serial = 10, .modelCode = 1, .info1 = 2}));
}

TEST(AnnounceReplyTest, ANumberThatDoesNotFitEndsTheReading) {
  EXPECT_EQ(parseAnnounceReply("S 2147483647 M -2147483648"), (AnnounceReply{.serial = 2147483647, .modelCode = -2147483647 - 1}));
  for (const char* number : {"2147483648", "-2147483649", "99999999999999999999999999", "+4294967295"}) {
    EXPECT_EQ(parseAnnounceReply("S 1 M " + std::string(number) + " I 3 4"), withSerial(1)) << number;
  }
}

TEST(AnnounceReplyTest, ModelCodesHaveNames) {
  EXPECT_STREQ(modelName(0), "HXA_T3D");
  EXPECT_STREQ(modelName(1), "QOR_T3D");
  EXPECT_STREQ(modelName(2), "QOR_T3D_C");
  for (const int code : {-1, 3, 100, -2147483647 - 1}) EXPECT_STREQ(modelName(code), "UNKNOWN_DEVICE") << code;
}

// The same reading with the standard library's stream.
AnnounceReply readByStream(const std::string& text) {
  std::istringstream in(text.substr(0, text.find('\0')));
  in.imbue(std::locale::classic());
  AnnounceReply reply;
  std::string thrownAway;
  const auto label = [&] { in >> thrownAway; };
  const auto number = [&](std::int32_t& place) {
    if (std::int32_t value = 0; in >> value) place = value;
  };
  label(), number(reply.serial), label(), number(reply.modelCode), label(), number(reply.info1), number(reply.info2);
  for (std::int32_t* info : {&reply.info3, &reply.info4, &reply.info5, &reply.info6, &reply.info7}) label(), number(*info);
  return reply;
}

// Texts that get far: tokens that are nearly right, with all kinds of gaps.
std::string nearlyRight(std::mt19937& random) {
  static const std::array<std::string, 18> pieces{"S",   "1", "-1", "+5", "007", "2147483647", "2147483648", "-2147483648", "-2147483649",
                                                  "12x", "-", "+",  "1.", "x1",  "\x80\xFF",   "0x1",        "+-1",         "\0"s};
  static const std::array<std::string, 6> gaps{" ", " ", "  ", "\t", "\n", ""};
  std::string text;
  for (auto tokens = random() % 24; tokens > 0; --tokens) text += pieces[random() % 17] + gaps[random() % gaps.size()];
  if (random() % 8 == 0) text += pieces.back() + " 1 2 3";
  return text;
}

std::string anyBytes(std::mt19937& random) {
  std::string text(random() % 300, '\0');
  for (char& byte : text) byte = static_cast<char>(random());
  return text;
}

TEST(AnnounceReplyTest, ReadsWhatAStreamReads) {
  std::mt19937 random(4711);
  for (int i = 0; i < 100000; ++i) {
    const std::string text = i % 4 == 0 ? anyBytes(random) : nearlyRight(random);
    ASSERT_EQ(parseAnnounceReply(text), readByStream(text)) << testing::PrintToString(text);
  }
}

}  // namespace

}  // namespace test

}  // namespace fringix
