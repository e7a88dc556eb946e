#include <gtest/gtest.h>

#include "head/model/sequence_store.h"
#include "head/optics/patterns.h"

namespace fringix::head {
namespace {

constexpr Size projector{10, 10};
constexpr std::size_t imageBytes = 300;

class SequenceStoreTest : public testing::Test {
 protected:
  std::uint32_t allocate(std::uint32_t imageCount) {
    std::uint32_t id = 0;
    EXPECT_EQ(store.allocate(imageCount, id), Status::ok);
    return id;
  }

  SequenceStore store{projector, 5 * imageBytes};
};

TEST_F(SequenceStoreTest, GivesEachSequenceANewId) {
  const std::uint32_t first = allocate(1);
  EXPECT_NE(first, 0U);
  EXPECT_EQ(store.free(first), Status::ok);
  EXPECT_NE(allocate(1), first);
}

TEST_F(SequenceStoreTest, RefusesWhatDoesNotFitAndTakesItAfterAFree) {
  const std::uint32_t first = allocate(3);
  std::uint32_t id = 99;
  EXPECT_EQ(store.allocate(3, id), Status::outOfMemory);
  EXPECT_EQ(id, 0U);
  store.free(first);
  allocate(5);
}

TEST_F(SequenceStoreTest, RefusesNoImagesAndMoreThanAnIndexCanName) {
  SequenceStore large(projector, 1000 * imageBytes);
  std::uint32_t id = 0;
  EXPECT_EQ(large.allocate(0, id), Status::badParameter);
  EXPECT_EQ(large.allocate(257, id), Status::badParameter);
  EXPECT_EQ(large.allocate(0xFFFFFFFF, id), Status::badParameter);
  EXPECT_EQ(large.allocate(256, id), Status::ok);
}

TEST_F(SequenceStoreTest, KeepsImages) {
  const std::uint32_t id = allocate(2);
  const Pattern pattern = makeRamp(projector, Axis::columns, 255);
  EXPECT_EQ(store.put(id, 1, pattern), Status::ok);
  EXPECT_EQ(store.image(id, 1).pattern->pixels, pattern.pixels);
  EXPECT_EQ(store.imageCount(id), 2U);
}

TEST_F(SequenceStoreTest, KnowsWhatItDoesNotHave) {
  const std::uint32_t id = allocate(2);
  EXPECT_EQ(store.put(id, 2, Pattern(projector)), Status::badParameter);
  EXPECT_EQ(store.put(id + 1, 0, Pattern(projector)), Status::unknownSequence);
  EXPECT_EQ(store.image(id, 2).status, Status::badParameter);
  EXPECT_EQ(store.image(id + 1, 0).status, Status::unknownSequence);
  EXPECT_EQ(store.imageCount(id + 1), 0U);
  EXPECT_EQ(store.free(id), Status::ok);
  EXPECT_EQ(store.free(id), Status::unknownSequence);
}

TEST_F(SequenceStoreTest, AShownImageOutlivesItsSequence) {
  const std::uint32_t id = allocate(1);
  store.put(id, 0, makeUniform(projector, 7));
  const auto shown = store.image(id, 0).pattern;
  store.free(id);
  EXPECT_EQ(shown->pixels.front(), grey(7));
}

}  // namespace
}  // namespace fringix::head
