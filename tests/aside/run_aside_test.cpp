#include "aside/run_aside.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>

namespace fringix {
namespace {

using namespace std::chrono_literals;

TEST(RunAside, WorkGoesOnWhenWhoeverStartedItWaitsForSomethingElse) {
  std::promise<void> begin;
  const auto ended = std::make_shared<std::promise<int>>();
  std::future<int> result = ended->get_future();
  runAside([ended, begun = begin.get_future().share()] {
    begun.wait();
    ended->set_value(7);
  });
  EXPECT_EQ(result.wait_for(0s), std::future_status::timeout);
  begin.set_value();
  EXPECT_EQ(result.get(), 7);
}

// Where one thread in a few hundred was lost, it was while many of them came and went.
TEST(RunAside, EveryOneOfManyIsHeardOf) {
  for (int i = 0; i < 2000; ++i) {
    const auto ended = std::make_shared<std::promise<int>>();
    std::future<int> result = ended->get_future();
    runAside([ended, i] { ended->set_value(i); });
    ASSERT_EQ(result.wait_for(20s), std::future_status::ready) << i;
    ASSERT_EQ(result.get(), i);
  }
}

}  // namespace
}  // namespace fringix
