#include "head/model/memory_budget.h"

#include <gtest/gtest.h>

namespace fringix::head {
namespace {

TEST(MemoryBudgetTest, GivesSharesUntilNothingIsLeft) {
  MemoryBudget budget(100);
  const auto first = budget.take(60);
  EXPECT_TRUE(first);
  EXPECT_FALSE(budget.take(41));
  EXPECT_TRUE(budget.take(40)) << "and takes it back when the share ends";
  EXPECT_TRUE(budget.take(0));
  EXPECT_EQ(budget.left(), 40U);
}

TEST(MemoryBudgetTest, NoNumberIsTooLarge) {
  MemoryBudget budget(100);
  const auto first = budget.take(1);
  EXPECT_FALSE(budget.take(static_cast<std::size_t>(-1)));
  EXPECT_FALSE(budget.take(static_cast<std::size_t>(-1) - 1));
}

TEST(MemoryBudgetTest, AShareThatMovesIsGivenBackOnce) {
  MemoryBudget budget(100);
  {
    MemoryBudget::Share share;
    share = *budget.take(30);
    const MemoryBudget::Share last = std::move(share);
    EXPECT_EQ(budget.left(), 70U);
  }
  EXPECT_EQ(budget.left(), 100U);
  MemoryBudget::Share share = *budget.take(30);
  share = *budget.take(50);
  EXPECT_EQ(budget.left(), 50U) << "what it held before is given back";
}

}  // namespace
}  // namespace fringix::head
