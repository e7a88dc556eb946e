// Which exposures make a series.
#include "scanning/exposures.h"

#include <gtest/gtest.h>

namespace fringix::tool {
namespace {

using Series = std::vector<std::int32_t>;

TEST(ExposureSeriesTest, BeginsWithThePresentOne) {
  EXPECT_EQ(exposureSeries(20000, 2), (Series{20000, 5000}));
  EXPECT_EQ(exposureSeries(20000, 3), (Series{20000, 5000, 80000}));
  EXPECT_EQ(exposureSeries(20000, 5), (Series{20000, 5000, 80000, 10000, 40000}));
}

TEST(ExposureSeriesTest, NoneIsShorterThanAMicrosecond) { EXPECT_EQ(exposureSeries(1, 3), (Series{1, 1, 4})); }

}  // namespace
}  // namespace fringix::tool
