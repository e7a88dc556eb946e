// Memory for large blocks.
#include "platform/block_memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "support/process_state.h"

namespace fringix::platform {

namespace {

using Block = std::unique_ptr<void, decltype(&freeBlock)>;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

TEST(BlockMemoryTest, ABlockOfAnySizeIsWholeAndIsFreed) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{4097}, 4 * mebibyte - 1, 4 * mebibyte, 9 * mebibyte + 13}) {
    const Block block(allocateBlock(size), freeBlock);
    ASSERT_NE(block, nullptr) << size;
    std::memset(block.get(), 0xA5, size);
    EXPECT_EQ(static_cast<const unsigned char*>(block.get())[size - 1], 0xA5);
  }
  freeBlock(nullptr);
}

TEST(BlockMemoryTest, WhatIsFreedIsGivenBack) {
  const std::size_t before = test::residentBytes();
  for (int i = 0; i < 40; ++i) {
    const Block block(allocateBlock(16 * mebibyte), freeBlock);
    ASSERT_NE(block, nullptr);
    std::memset(block.get(), 1, 16 * mebibyte);
  }
  EXPECT_LT(test::residentBytes(), before + 100 * mebibyte);
}

TEST(BlockMemoryTest, ABlockThatIsNotWrittenToCostsNothing) {
  const std::size_t before = test::residentBytes();
  const Block block(allocateBlock(1024 * mebibyte), freeBlock);
  ASSERT_NE(block, nullptr);
  std::memset(block.get(), 1, 1);
  EXPECT_LT(test::residentBytes(), before + 8 * mebibyte);
}

}  // namespace

}  // namespace fringix::platform
