// How much memory the library takes, and what it does without: all of it comes through operator new, which is counted and refused here.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "rendering.h"
#include "scan/parallel.h"
#include "scan/scanner.h"

namespace {

std::atomic<std::size_t> taken{0};
std::atomic<std::size_t> most{0};

// How many more blocks the calling thread gets; none is refused below 0.
constinit thread_local int granted = -1;

// Before each block stands its size.
constexpr std::size_t before = alignof(std::max_align_t) > 16 ? alignof(std::max_align_t) : 16;

void count(std::size_t size) {
  const std::size_t now = taken += size;
  std::size_t highest = most;
  while (now > highest && !most.compare_exchange_weak(highest, now)) {
  }
}

}  // namespace

void* operator new(std::size_t size) {
  if (granted == 0) throw std::bad_alloc();
  if (granted > 0) --granted;
  auto* const block = static_cast<std::byte*>(std::malloc(before + size));
  if (block == nullptr) throw std::bad_alloc();
  *reinterpret_cast<std::size_t*>(block) = size;
  count(size);
  return block + before;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  auto* const block = static_cast<std::byte*>(memory) - before;
  taken -= *reinterpret_cast<std::size_t*>(block);
  std::free(block);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace fringix::scan::test {
namespace {

constexpr std::size_t pixels = std::size_t{640} * 512;
constexpr std::size_t picturesBytes = 20 * pixels;

class MemoryTest : public testing::TestWithParam<Method> {
 protected:
  MemoryTest() : rendering(head, 0, plane({0.2, -0.1, 1}, 400)), pictures(rendering.pictures(plan, {})) {
    cloud.points = points.data();
    cloud.normals = normals.data();
    cloud.sigma = sigma.data();
    cloud.intensity = intensity.data();
    cloud.reason = reason.data();
    restart();
  }

  void restart() {
    start = taken;
    most = start;
  }
  std::size_t peak() const { return most - start; }

  const Calibration head = smallHead(640, 512);
  const PlanSettings settings = defaultSettings(GetParam(), 1280);
  const Plan plan{settings};
  const Rendering rendering;
  const std::vector<std::vector<std::uint8_t>> pictures;
  std::vector<float> points = std::vector<float>(3 * pixels);
  std::vector<float> normals = std::vector<float>(3 * pixels);
  std::vector<float> sigma = std::vector<float>(pixels);
  std::vector<std::uint8_t> intensity = std::vector<std::uint8_t>(pixels);
  std::vector<std::uint8_t> reason = std::vector<std::uint8_t>(pixels);
  Cloud cloud;
  std::size_t start = 0;
};

INSTANTIATE_TEST_SUITE_P(Methods, MemoryTest, testing::Values(Method::grayAndPhase, Method::threeFrequencies));

TEST_P(MemoryTest, PicturesResultsAndAllElseAreAtMostThreeTimesThePictures) {
  constexpr std::size_t resultBytes = (12 + 12 + 4 + 1 + 1) * pixels;
  Scanner scanner(settings, head, {});
  const Findings findings = scanner.compute(0, pointersTo(pictures), cloud);
  EXPECT_GT(findings.counts[0], pixels / 2);
  EXPECT_GT(peak(), 8 * pixels) << "the table of rays, at least, was counted";
  EXPECT_LE(picturesBytes + resultBytes + peak(), 3 * picturesBytes);
}

// The normals, 12 bytes per pixel of the results, come when the sums have gone.
TEST_P(MemoryTest, OnePictureAtATimeTakesNoMore) {
  constexpr std::size_t resultBytes = (12 + 4 + 1 + 1) * pixels;
  Scanner scanner(settings, head, {});
  for (const auto& picture : pictures) scanner.add(0, picture.data());
  const std::size_t sums = taken - start;
  scanner.finish(0, cloud);
  EXPECT_LE(pixels + resultBytes + peak(), 3 * picturesBytes);
  EXPECT_GT(sums, 20 * pixels);
  EXPECT_LT(taken - start, 9 * pixels) << "the sums are gone";
}

// Whichever block is refused while threads are started, those that run do the work.
TEST(ScarceMemoryTest, StartsFewerThreads) {
  for (int blocks = 0; blocks < 20; ++blocks) {
    std::atomic<int> done{0};
    granted = blocks;
    inParallel(4, 100, [&](std::size_t) { ++done; });
    granted = -1;
    EXPECT_EQ(done, 100) << blocks;
  }
}

}  // namespace
}  // namespace fringix::scan::test
