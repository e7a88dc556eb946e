#include "arguments/duration.h"

#include <gtest/gtest.h>

#include "arguments/usage_error.h"

namespace fringix::arguments {
namespace {

using namespace std::chrono_literals;

TEST(Duration, HasAUnitOrMeansSeconds) {
  EXPECT_EQ(toDuration("1s"), 1s);
  EXPECT_EQ(toDuration("500ms"), 500ms);
  EXPECT_EQ(toDuration("2min"), 120s);
  EXPECT_EQ(toDuration("0.25"), 250ms);
  EXPECT_EQ(toDuration("1440min"), 24h);
  EXPECT_EQ(toDuration("1ms"), 1ms);
}

TEST(Duration, OtherTextsAreRefusedWithWhatIsAllowed) {
  for (const char* text : {"", "s", "0s", "-1s", "1h", "1.2.3s", "1 s", "2s2", "0.9ms", "1441min", "nan", "nans", "inf", "1e3"}) {
    try {
      toDuration(text);
      ADD_FAILURE() << text;
    } catch (const UsageError& error) {
      EXPECT_EQ(std::string(error.what()), "\"" + std::string(text) + "\" is no time such as 1s, 500ms or 2min, from 1ms to 1440min");
    }
  }
}

}  // namespace
}  // namespace fringix::arguments
