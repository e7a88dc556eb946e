// Which faults strike when.
#include "head/faults/fault_plan.h"

#include <gtest/gtest.h>

#include <chrono>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/faults/random_faults.h"
#include "support/eventually.h"

namespace fringix::head {
namespace {

class FaultPlanTest : public testing::Test {
 protected:
  void add(const std::string& text) { plan.add(parseFault(text, commandNames())); }

  // One letter an occasion: x where a fault strikes.
  std::string struck(int count, Occasion occasion, std::string_view command = {}) {
    std::string seen;
    for (int i = 0; i < count; ++i) seen += plan.strike(occasion, command).empty() ? '.' : 'x';
    return seen;
  }
  std::string commands(int count, std::string_view name = "56MSG_SLGetGain") { return struck(count, Occasion::command, name); }
  std::string pictures(int count) { return struck(count, Occasion::picture, "41MSG_SLGetLiveImage"); }
  std::string triggers(int count) { return struck(count, Occasion::trigger); }

  static std::string joined(std::initializer_list<std::string> parts) {
    std::string all;
    for (const std::string& part : parts) all += part;
    return all;
  }

  FaultPlan plan;
};

TEST_F(FaultPlanTest, NothingStrikesWhereNothingIsSet) {
  EXPECT_EQ(joined({commands(3), pictures(3), triggers(3)}), ".........");
  EXPECT_FALSE(plan.away());
}

TEST_F(FaultPlanTest, AlwaysIsEveryCommandAndNeitherGreetingNorTrigger) {
  add("always: cut");
  EXPECT_EQ(joined({commands(3), pictures(2)}), "xxxxx");
  EXPECT_EQ(joined({triggers(2), struck(2, Occasion::greeting, greetingName), struck(2, Occasion::moment)}), "......");
}

TEST_F(FaultPlanTest, AfterSoManyCommandsOnce) {
  add("after 2 commands: cut");
  EXPECT_EQ(joined({commands(1), pictures(1), commands(3)}), "..x..");
}

TEST_F(FaultPlanTest, AfterSoManyPicturesOnlyPictures) {
  add("after 2 pictures, 2 times: cut");
  EXPECT_EQ(joined({commands(3), pictures(2), commands(2), pictures(3)}), ".......xx.");
}

TEST_F(FaultPlanTest, ANamedCommandCountsAndIsStruck) {
  add("after 1 SLGetGain: cut");
  EXPECT_EQ(joined({commands(2, "55MSG_SLSetGain"), commands(1), commands(1, "55MSG_SLSetGain"), commands(2)}), "....x.");
}

TEST_F(FaultPlanTest, TheGreetingIsStruckByItsName) {
  add("at greeting, once: cut");
  EXPECT_EQ(joined({commands(2), struck(2, Occasion::greeting, greetingName)}), "..x.");
}

TEST_F(FaultPlanTest, NoPictureWaitsForAPicture) {
  add("always, once: no picture");
  EXPECT_EQ(joined({commands(2), pictures(2)}), "..x.");
}

TEST_F(FaultPlanTest, TriggersAreStruckByTheirOwnFaults) {
  add("after 1 trigger: lost trigger");
  add("after 2 commands, always: doubled trigger");
  EXPECT_EQ(triggers(3), ".x.");
  EXPECT_EQ(commands(2), "..");
  EXPECT_EQ(triggers(2), "xx");
}

TEST_F(FaultPlanTest, ATimeHasToPassFirst) {
  add("after 150 ms: cut");
  EXPECT_EQ(commands(1), ".");
  EXPECT_TRUE(test::eventually([&] { return commands(1) == "x"; }));
  EXPECT_EQ(commands(1), ".");
}

TEST_F(FaultPlanTest, SeveralStrikeAtOnceInTheirOrder) {
  add("always: drip");
  add("always: cut");
  const std::vector<Fault> both = plan.strike(Occasion::command, "56MSG_SLGetGain");
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(both[0].action, FaultAction::drip);
  EXPECT_EQ(both[1].action, FaultAction::cut);
}

TEST_F(FaultPlanTest, TellsHowOftenEachHasStruck) {
  add("always: cut");
  add("at SLGetGain: drip");
  commands(2);
  commands(1, "55MSG_SLSetGain");
  EXPECT_EQ(plan.entries().at(0).struck, 3U);
  EXPECT_EQ(plan.entries().at(1).struck, 2U);
}

TEST_F(FaultPlanTest, AFrozenHeadIsAwayUntilAllFaultsEnd) {
  add("after 1 command: frozen");
  commands(1);
  EXPECT_FALSE(plan.away());
  commands(1);
  EXPECT_TRUE(plan.away());
  const auto before = plan.edition();
  plan.clear();
  EXPECT_FALSE(plan.away());
  EXPECT_NE(plan.edition(), before);
}

TEST_F(FaultPlanTest, AFrozenHeadThawsInTime) {
  add("always, once: frozen for 50 ms");
  commands(1);
  EXPECT_TRUE(test::eventually([&] { return !plan.away(); }));
}

TEST_F(FaultPlanTest, ARestartIsTakenOnceAndIsOverWhenTheHeadSaysSo) {
  add("after 1 ms: restart after 3 s");
  EXPECT_TRUE(test::eventually([&] { return struck(1, Occasion::moment) == "x"; })) << "by the passing of time alone";
  EXPECT_TRUE(plan.away());
  EXPECT_EQ(plan.takeRestart(), std::chrono::milliseconds(3000));
  EXPECT_EQ(plan.takeRestart(), std::nullopt);
  plan.clear();
  EXPECT_TRUE(plan.away()) << "a head that is gone is not back at once";
  plan.restarted();
  EXPECT_FALSE(plan.away());
}

std::vector<std::string> drawn(const std::string& text, int count, Occasion occasion) {
  const Fault random = parseFault(text, commandNames());
  std::vector<std::string> texts;
  for (int n = 1; n <= count; ++n) {
    if (const auto fault = drawFault(random, static_cast<std::uint64_t>(n), occasion)) texts.push_back(fault->text);
  }
  return texts;
}

// The texts are those of every system.
TEST(RandomFaults, AreAMatterOfTheirSeed) {
  EXPECT_EQ(drawn("random:7:1", 4, Occasion::picture),
            (std::vector<std::string>{"random:7:1 1: wrong length -1", "random:7:1 2: slow link 3122750",
                                      "random:7:1 3: reset at byte 21397", "random:7:1 4: cut at byte 383450"}));
  EXPECT_EQ(drawn("random:7:1", 2, Occasion::trigger),
            (std::vector<std::string>{"random:7:1 1: doubled trigger", "random:7:1 2: lost trigger"}));
  EXPECT_NE(drawn("random:8:0.5", 40, Occasion::command), drawn("random:7:0.5", 40, Occasion::command));
}

TEST(RandomFaults, StrikeAsOftenAsTheirRateSays) {
  EXPECT_EQ(drawn("random:1:1", 1000, Occasion::command).size(), 1000U);
  EXPECT_NEAR(static_cast<double>(drawn("random:1:0.1", 10000, Occasion::command).size()), 1000, 100);
}

// Each text that is drawn can be given as a fault.
TEST(RandomFaults, BringEveryActionWithinItsLimits) {
  std::set<std::string> actions;
  for (const std::string& text : drawn("random:3:1", 500, Occasion::picture)) {
    const std::string what = text.substr(text.rfind(':') + 2);
    EXPECT_NO_THROW(parseFault("always: " + what, commandNames())) << what;
    actions.insert(what.substr(0, what.find_first_of("0123456789-")));
  }
  EXPECT_EQ(actions, (std::set<std::string>{"stall at byte ", "reset at byte ", "cut at byte ", "slow link ", "wrong status ",
                                            "wrong length ", "no picture"}));
}

TEST(RandomFaults, CountCommandsAndTriggersInAPlan) {
  FaultPlan plan;
  plan.add(parseFault("random:7:1", commandNames()));
  EXPECT_EQ(plan.strike(Occasion::command, "56MSG_SLGetGain").size(), 1U);
  EXPECT_EQ(plan.strike(Occasion::greeting, greetingName).size(), 0U);
  EXPECT_TRUE(plan.strike(Occasion::trigger).at(0).text.starts_with("random:7:1 2: "));
}

}  // namespace
}  // namespace fringix::head
