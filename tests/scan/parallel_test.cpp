#include "scan/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace fringix::scan {
namespace {

TEST(ParallelTest, DoesEachPieceOnce) {
  for (const std::size_t threads : {1U, 3U, 50U}) {
    std::vector<std::atomic<int>> done(20);
    inParallel(threads, done.size(), [&](std::size_t piece) { ++done[piece]; });
    for (const std::atomic<int>& times : done) EXPECT_EQ(times, 1) << threads;
  }
  inParallel(4, 0, [](std::size_t) { FAIL() << "there is no piece"; });
}

TEST(ParallelTest, WhatAPieceThrowsComesOutAndEndsTheRest) {
  for (const std::size_t threads : {1U, 4U}) {
    std::atomic<std::size_t> done{0};
    const auto work = [&](std::size_t piece) {
      if (piece == 0) throw std::runtime_error("no room");
      ++done;
      std::this_thread::yield();
    };
    EXPECT_THROW(inParallel(threads, 1000000000, work), std::runtime_error);
    EXPECT_LT(done, 1000000000U);
  }
}

}  // namespace
}  // namespace fringix::scan
