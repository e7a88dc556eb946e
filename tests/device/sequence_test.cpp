// What only the sequence commands do.
#include <gtest/gtest.h>

#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

TEST(SequenceTest, TheIdIsZeroUntilItHasArrivedAndStaysInSpiteOfABadStatus) {
  OpenSession session({expect(text("11MSG_SLSeqAlloc") + integers(3)), reply(integers(9, -5))});
  std::uint32_t id = 42;
  EXPECT_EQ(SLSeqAlloc(session.handle(), 3, &id), SLSYSTEM_ERROR);
  EXPECT_EQ(id, 9U);
}

TEST(SequenceTest, AnUploadOfAProjectorFrameArrivesWhole) {
  const Bytes pattern = noise(640 * 480 * 3, 11);
  const Bytes request = text("12MSG_SLSeqPut") + integers(1, 2, 640, 480, 1920) + pattern;
  OpenSession session({expect(request), reply(integer(0))}, {.projectorWidth = 640, .projectorHeight = 480});
  EXPECT_EQ(SLSeqPut(session.handle(), 1, reinterpret_cast<const std::uint8_t*>(pattern.data()), 640, 480, 1920, 2), SLALL_OKAY);
  EXPECT_TRUE(session.sent() == request);
}

TEST(SequenceTest, AProjectorSizeThatWrapsFitsNoStride) {
  // 0x55555556 * 3 is 2 in 32 bits.
  OpenSession session(Script{}, {.projectorWidth = 0x55555556, .projectorHeight = 1});
  const std::uint8_t pixels[2] = {};
  EXPECT_EQ(SLSeqPut(session.handle(), 1, pixels, 0x55555556, 1, 2, 0), SLBAD_PARAMETER);
  EXPECT_EQ(session.sent(), Bytes());
}

TEST(SequenceTest, NegativeSizesOfAHeadFitNothing) {
  OpenSession session(Script{}, {.cameraWidth = -1, .cameraHeight = -4, .projectorWidth = -6, .projectorHeight = -5});
  std::uint8_t byte = 0;
  EXPECT_EQ(SLSeqPut(session.handle(), 1, &byte, static_cast<std::uint32_t>(-6), static_cast<std::uint32_t>(-5),
                     static_cast<std::uint32_t>(-18), 0),
            SLBAD_PARAMETER);
  EXPECT_EQ(session.device().CalcGrayCode(&byte, -2, static_cast<std::uint32_t>(-4), 0, 0, 0, 0), SLBAD_PARAMETER);
  EXPECT_EQ(session.sent(), Bytes());
}

}  // namespace

}  // namespace fringix::test
