// Faults as people write them.
#include "head/faults/parse_fault.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "arguments/usage_error.h"
#include "head/commands/commands.h"

namespace fringix::head {
namespace {

using std::chrono::milliseconds;

Fault parse(const std::string& text) { return parseFault(text, commandNames()); }

std::string complaintOf(const std::string& text) {
  try {
    parse(text);
    return "nothing";
  } catch (const arguments::UsageError& error) {
    return error.what();
  }
}

TEST(ParseFault, AlwaysIsEachCommand) {
  const Fault fault = parse("always: cut at byte 700");
  EXPECT_EQ(fault.text, "always: cut at byte 700");
  EXPECT_EQ(fault.after, 0U);
  EXPECT_EQ(fault.counted, Occasion::command);
  EXPECT_EQ(fault.command, "");
  EXPECT_EQ(fault.times, everyTime);
  EXPECT_EQ(fault.action, FaultAction::cut);
  EXPECT_EQ(fault.number, 700);
}

TEST(ParseFault, WhatComesAfterStrikesOnce) {
  const Fault fault = parse("after 3 pictures: reset");
  EXPECT_EQ(fault.after, 3U);
  EXPECT_EQ(fault.counted, Occasion::picture);
  EXPECT_EQ(fault.times, 1U);
  EXPECT_EQ(fault.number, 0) << "at once";
}

TEST(ParseFault, OneOfAThingIsAsGoodAsSeveral) {
  EXPECT_EQ(parse("after 1 command: cut").counted, Occasion::command);
  EXPECT_EQ(parse("after 1 picture: cut").counted, Occasion::picture);
  EXPECT_EQ(parse("after 1 trigger: cut").counted, Occasion::trigger);
  EXPECT_EQ(parse("after 2 triggers: cut").after, 2U);
}

TEST(ParseFault, HowOftenCanBeSaid) {
  EXPECT_EQ(parse("always, once: cut").times, 1U);
  EXPECT_EQ(parse("after 3 pictures, 5 times: cut").times, 5U);
  EXPECT_EQ(parse("after 3 pictures, always: cut").times, everyTime);
  EXPECT_EQ(parse("at SLGetGain: cut").times, everyTime);
  EXPECT_EQ(parse("at SLGetGain, once: cut").times, 1U);
}

TEST(ParseFault, ATimeIsWrittenInSeveralWays) {
  for (const char* text : {"after 2 s: cut", "after 2s: cut", "after 2 seconds: cut", "after 2000 ms: cut", "after 2000ms : cut"}) {
    EXPECT_EQ(parse(text).delay, milliseconds(2000)) << text;
    EXPECT_EQ(parse(text).after, 0U) << text;
    EXPECT_EQ(parse(text).times, 1U) << text;
  }
  EXPECT_EQ(parse("after 0.5 min: cut").delay, milliseconds(30000));
}

TEST(ParseFault, ACommandHasSeveralNames) {
  for (const char* name : {"56MSG_SLGetGain", "SLGetGain", "GetGain", "getgain"}) {
    EXPECT_EQ(parse(std::string("at ") + name + ": cut").command, name);
    EXPECT_TRUE(means(name, "56MSG_SLGetGain")) << name;
    EXPECT_FALSE(means(name, "57MSG_SLGetGainMinMax")) << name;
  }
  EXPECT_EQ(parse("after 2 SLStartMeasurement: cut").command, "SLStartMeasurement");
  EXPECT_EQ(parse("after 2 SLStartMeasurement: cut").after, 2U);
  EXPECT_EQ(parse("at greeting: stall").command, "greeting");
  EXPECT_EQ(parse("at ByeBye=: cut").command, "ByeBye=");
}

TEST(ParseFault, EveryActionIsUnderstood) {
  struct Row {
    const char* text;
    FaultAction action;
    std::int64_t number;
    milliseconds time;
  };
  for (const Row& row : std::vector<Row>{{"stall", FaultAction::stall, 0, withoutEnd},
                                         {"stall for 2 s", FaultAction::stall, 0, milliseconds(2000)},
                                         {"stall at byte 7 for 50ms", FaultAction::stall, 7, milliseconds(50)},
                                         {"reset at byte 1", FaultAction::reset, 1, {}},
                                         {"cut", FaultAction::cut, 0, {}},
                                         {"drip", FaultAction::drip, 0, milliseconds(10)},
                                         {"drip every 1 ms", FaultAction::drip, 0, milliseconds(1)},
                                         {"slow link 20000", FaultAction::slowLink, 20000, {}},
                                         {"slow link 1 bytes/s", FaultAction::slowLink, 1, {}},
                                         {"wrong status -2", FaultAction::wrongStatus, -2, {}},
                                         {"wrong length +3", FaultAction::wrongLength, 3, {}},
                                         {"wrong length -3", FaultAction::wrongLength, -3, {}},
                                         {"no picture", FaultAction::noPicture, 0, {}},
                                         {"frozen", FaultAction::frozen, 0, withoutEnd},
                                         {"frozen for 1 min", FaultAction::frozen, 0, milliseconds(60000)},
                                         {"restart", FaultAction::restart, 0, milliseconds(1000)},
                                         {"restart after 3 s", FaultAction::restart, 0, milliseconds(3000)},
                                         {"lost trigger", FaultAction::lostTrigger, 0, {}},
                                         {"doubled trigger", FaultAction::doubledTrigger, 0, {}}}) {
    const Fault fault = parse(std::string("always: ") + row.text);
    EXPECT_EQ(fault.action, row.action) << row.text;
    EXPECT_EQ(fault.number, row.number) << row.text;
    EXPECT_EQ(fault.time, row.time) << row.text;
  }
}

TEST(ParseFault, RandomOnesHaveASeedAndARate) {
  const Fault fault = parse("random:7:0.05");
  EXPECT_EQ(fault.action, FaultAction::random);
  EXPECT_EQ(fault.number, 7);
  EXPECT_EQ(fault.rate, 0.05);
  EXPECT_EQ(parse(" random : 0 : 1 ").rate, 1);
}

TEST(ParseFault, ComplaintsSayWhatWhereAndWhatIsAllowed) {
  const std::string actions =
      "stall, reset, cut, drip, slow link, wrong status, wrong length, no picture, frozen, restart, lost trigger or doubled trigger";
  for (
      const auto& [text, complaint] : std::vector<std::pair<std::string, std::string>>{
          {"", R"("": expected always, at, after or random at the end)"},
          {"atfer 3 pictures: cut",
           R"("atfer 3 pictures: cut": expected always, at, after or random at character 1, not "atfer", did you mean "after"?)"},
          {"after 3 picturs: cut",
           R"("after 3 picturs: cut": expected commands, pictures, triggers, ms, s, min or the name of a command at character 9, not )"
           R"("picturs", did you mean "pictures"?)"},
          {"after three pictures: cut", R"("after three pictures: cut": expected a number at character 7, not "three")"},
          {"after -1 pictures: cut", R"("after -1 pictures: cut": "-1" is no number from 0 to 1000000000 (character 7))"},
          {"after 2.5 pictures: cut", R"("after 2.5 pictures: cut": "2.5" is no number from 0 to 1000000000 (character 7))"},
          {"after 2000 min: cut",
           R"("after 2000 min: cut": "2000min" is no time such as 1s, 500ms or 2min, from 1ms to 1440min (character 7))"},
          {"at SLGetGian: cut",
           R"("at SLGetGian: cut": expected the name of a command or greeting at character 4, not "SLGetGian", did you mean "SLGetGain"?)"},
          {"at", R"("at": expected the name of a command or greeting at the end)"},
          {"always", R"("always": expected ":", or "," with once, N times or always, at the end)"},
          {"always, twice: cut", R"("always, twice: cut": expected once, always, or a number with times at character 9, not "twice")"},
          {"always, 2: cut", R"("always, 2: cut": expected times at character 10, not ":")"},
          {"always:", R"("always:": expected )" + actions + " at the end"},
          {"always: crash", R"("always: crash": expected )" + actions + R"( at character 9, not "crash")"},
          {"always: frozzen", R"("always: frozzen": expected )" + actions + R"( at character 9, not "frozzen", did you mean "frozen"?)"},
          {"always: wrong statu 3",
           R"("always: wrong statu 3": expected status or length at character 15, not "statu", did you mean "status"?)"},
          {"always: wrong status", R"("always: wrong status": expected a number at the end)"},
          {"always: wrong status 3000000000",
           R"("always: wrong status 3000000000": "3000000000" is no number from -2147483648 to 2147483647 (character 22))"},
          {"always: cut at byte", R"("always: cut at byte": expected a number at the end)"},
          {"always: cut at byte x", R"("always: cut at byte x": expected a number at character 21, not "x")"},
          {"always: cut byte 7", R"("always: cut byte 7": expected the end at character 13, not "byte")"},
          {"always: stall for ever", R"("always: stall for ever": expected a time such as 2 s or 500 ms at character 19, not "ever")"},
          {"always: stall for 2", R"("always: stall for 2": expected a time such as 2 s or 500 ms at character 19, not "2")"},
          {"always: slow link 0", R"("always: slow link 0": "0" is no number from 1 to 1000000000 (character 19))"},
          {"random:1", R"("random:1": expected random:SEED:RATE at the end)"},
          {"random:x:1", R"("random:x:1": "x" is no number from 0 to 1000000000 (character 8))"},
          {"random:1:1.5", R"("random:1:1.5": "1.5" is no number from 0 to 1 (character 10))"},
          {"random:1:0", R"("random:1:0": a rate of 0 strikes nothing (character 10))"}}) {
    EXPECT_EQ(complaintOf(text), complaint);
  }
}

TEST(ParseFault, NoTextHarms) {
  const std::string letters = "always after at 3: cut ,s\x01";
  std::uint32_t state = 1;
  for (int i = 0; i < 2000; ++i) {
    std::string text;
    for (int k = 0; k < 20; ++k) text += letters[(state = state * 1664525 + 1013904223) / 65536 % letters.size()];
    complaintOf(text);
  }
  EXPECT_NE(complaintOf(std::string(100000, 'x')), "nothing");
  EXPECT_NE(complaintOf("after " + std::string(100000, '9') + " commands: cut"), "nothing");
}

}  // namespace
}  // namespace fringix::head
