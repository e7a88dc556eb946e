// What a soak judges by.
#include <gtest/gtest.h>

#include <algorithm>

#include "soak/choices.h"
#include "soak/growth.h"
#include "soak/session_states.h"

namespace fringix::test {

namespace {

std::vector<Choice> firstChoices(std::uint64_t seed, std::size_t thread) {
  Choices choices(seed, thread, 24);
  std::vector<Choice> first;
  for (int i = 0; i < 20000; ++i) first.push_back(choices.next());
  return first;
}

TEST(SoakPartsTest, ChoicesFollowFromSeedAndThread) {
  const auto choices = firstChoices(15, 3);
  EXPECT_TRUE(choices == firstChoices(15, 3));
  EXPECT_FALSE(choices == firstChoices(15, 4));
  EXPECT_FALSE(choices == firstChoices(16, 3));
  EXPECT_FALSE(choices == firstChoices(15 + (std::uint64_t{1} << 32U), 3));
}

TEST(SoakPartsTest, ChoicesAreOfAllKindsAndOneThreadSearches) {
  for (const std::size_t thread : {0U, 1U}) {
    const auto choices = firstChoices(15, thread);
    for (const Action action : {Action::call, Action::local, Action::renew, Action::end, Action::unknown, Action::search}) {
      const auto count = std::count_if(choices.begin(), choices.end(), [=](const Choice& choice) { return choice.action == action; });
      EXPECT_EQ(count > 0, action != Action::search || thread == 0) << static_cast<int>(action);
    }
  }
}

std::vector<Sample> samples(std::size_t first, std::size_t warm, std::size_t last, Held held) {
  std::vector<Sample> all(90);
  for (std::size_t i = 0; i < all.size(); ++i) {
    all[i].held[held] = i < 30 ? first : i < 60 ? warm : last;
    all[i].operations = i * 10;
  }
  all[35].held[held] = all[70].held[held] = 1U << 30U;  // a moment is nothing
  return all;
}

TEST(SoakPartsTest, GrowthIsTooMuchAboveItsBound) {
  for (const Held held : {heap, resident, descriptors, threads}) {
    const std::size_t bound = kindOf(held).bound;
    EXPECT_FALSE(growthOf(samples(0, 1000, 1000 + bound, held), held).tooMuch) << "the warm-up does not count";
    EXPECT_TRUE(growthOf(samples(0, 1000, 1001 + bound, held), held).tooMuch);
    EXPECT_FALSE(growthOf(samples(0, 1000 + 2 * bound, 1000, held), held).tooMuch);
  }
}

TEST(SoakPartsTest, GrowthTellsWhatItNotices) {
  const Growth growth = growthOf(samples(7, 1000, 2000, heap), heap);
  EXPECT_EQ(growth.first, 7U);
  EXPECT_EQ(growth.warm, 1000U);
  EXPECT_EQ(growth.last, 2000U);
  EXPECT_DOUBLE_EQ(growth.noticedAnOperation, static_cast<double>(kindOf(heap).bound) / 300);
}

const Call& callOf(std::string_view name) {
  return *std::find_if(calls().begin(), calls().end(), [=](const Call& call) { return call.name == name; });
}

constexpr Knowledge open{};
constexpr Knowledge failed{true, false, false};
constexpr Knowledge freeing{false, true, false};
constexpr Knowledge freed{false, true, true};

TEST(SoakPartsTest, AFreedSessionIsUnknown) {
  EXPECT_TRUE(mayGive(callOf("SLGetGain"), SLUNKNOWN_DEVICE_ID, freed, freed));
  EXPECT_FALSE(mayGive(callOf("SLGetGain"), SLALL_OKAY, freed, freed));
  EXPECT_FALSE(mayGive(callOf("SLGetGain"), SLSYSTEM_ERROR, freed, freed));
  EXPECT_FALSE(mayGiveByItself(SLALL_OKAY, freed, freed));
  EXPECT_FALSE(mayBeFreedWith(SLALL_OKAY, freed, true));
}

TEST(SoakPartsTest, OnlyAFreedSessionIsUnknown) {
  EXPECT_FALSE(mayGive(callOf("SLGetGain"), SLUNKNOWN_DEVICE_ID, open, open));
  EXPECT_FALSE(mayGive(callOf("SLSaveData"), SLUNKNOWN_DEVICE_ID, failed, failed));
  EXPECT_FALSE(mayGiveByItself(SLUNKNOWN_DEVICE_ID, open, open));
  EXPECT_TRUE(mayGive(callOf("SLGetGain"), SLUNKNOWN_DEVICE_ID, open, freeing));
  EXPECT_FALSE(mayBeFreedWith(SLUNKNOWN_DEVICE_ID, open, false));
  EXPECT_TRUE(mayBeFreedWith(SLUNKNOWN_DEVICE_ID, open, true));
}

TEST(SoakPartsTest, AFailedSessionStaysFailed) {
  EXPECT_TRUE(mayGive(callOf("SLGetGain"), SLSYSTEM_ERROR, failed, failed));
  for (const int status : {SLALL_OKAY, SLCONNECTION_ERROR, SLVERSION_TOO_OLD, SLBAD_PARAMETER})
    EXPECT_FALSE(mayGive(callOf("SLGetGain"), status, failed, failed)) << status;
  EXPECT_TRUE(mayGive(callOf("SLExecRS232"), SLVERSION_TOO_OLD, failed, failed));
  EXPECT_FALSE(mayGive(callOf("SLExecRS232"), SLSYSTEM_ERROR, failed, failed));
  EXPECT_FALSE(mayBeFreedWith(SLCONNECTION_ERROR, failed, false));
}

TEST(SoakPartsTest, OnlySomeCallsMayGiveWhatOthersMayNot) {
  EXPECT_FALSE(mayGive(callOf("SLGetGain"), SLMEASUREMENT_FAILED, open, open));
  EXPECT_TRUE(mayGive(callOf("SLStartFromTo"), SLMEASUREMENT_FAILED, open, open));
  EXPECT_FALSE(mayGive(callOf("SLGetGain"), 7, open, open));
  EXPECT_TRUE(mayGive(callOf("SLSetBrightnessLevel"), 7, open, open));
  EXPECT_FALSE(mayGive(callOf("SLGetImageIndexEx"), SLBAD_PARAMETER, open, open));
  EXPECT_TRUE(mayGive(callOf("SLGetImageIndex"), SLBAD_PARAMETER, open, open));
  EXPECT_FALSE(mayBeOpenedWith(SLUNKNOWN_DEVICE_ID));
}

}  // namespace

}  // namespace fringix::test
