#include "times/wall_time.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "support/pattern.h"

namespace fringix {
namespace {

WallTime after(std::chrono::milliseconds since1970) { return WallTime(since1970); }

TEST(WallTimeTest, IsToldInUniversalTime) {
  EXPECT_EQ(universalText(after(std::chrono::milliseconds(1795264215007)), "%Y-%m-%d %H:%M:%S"), "2026-11-21 12:30:15");
  EXPECT_EQ(universalText(std::time_t{0}, "%Y-%m-%d"), "1970-01-01");
}

TEST(WallTimeTest, IsToldInLocalTime) {
  const std::string told = localText(after(std::chrono::milliseconds(1795264215007)), "%Y-%m-%d %H:%M:%S");
  EXPECT_TRUE(test::matches(told, "2026-11-2\\d \\d\\d:\\d\\d:15")) << told;
}

TEST(WallTimeTest, HasThreeDigitsForMilliseconds) {
  EXPECT_EQ(millisecondText(after(std::chrono::milliseconds(1795264215007))), ".007");
  EXPECT_EQ(millisecondText(after(std::chrono::milliseconds(1795264215999))), ".999");
  EXPECT_EQ(millisecondText(after(std::chrono::seconds(1))), ".000");
  EXPECT_EQ(millisecondText(after(std::chrono::milliseconds(-1))), ".999") << "before 1970, too, it is what is beyond the second";
}

TEST(WallTimeTest, ATimeWithoutADateIsEmpty) { EXPECT_EQ(universalText(static_cast<std::time_t>(INT64_MAX), "%Y-%m-%d"), ""); }

}  // namespace
}  // namespace fringix
