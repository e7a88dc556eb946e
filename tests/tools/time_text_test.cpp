#include "heads/time_text.h"

#include <gtest/gtest.h>

#include "arguments/usage_error.h"

namespace fringix::tool {
namespace {

TEST(TimeText, HasAUnitOrMeansSeconds) {
  EXPECT_DOUBLE_EQ(parseSeconds("1s"), 1);
  EXPECT_DOUBLE_EQ(parseSeconds("500ms"), 0.5);
  EXPECT_DOUBLE_EQ(parseSeconds("2min"), 120);
  EXPECT_DOUBLE_EQ(parseSeconds("0.25"), 0.25);
  EXPECT_DOUBLE_EQ(parseSeconds("1440min"), 86400);
  EXPECT_DOUBLE_EQ(parseSeconds("1ms"), 0.001);
}

TEST(TimeText, OtherTextsAreRefusedWithWhatIsAllowed) {
  for (const char* text : {"", "s", "0s", "-1s", "1h", "1.2.3s", "1 s", "0.9ms", "1441min", "nan", "inf", "1e3"}) {
    try {
      parseSeconds(text);
      ADD_FAILURE() << text;
    } catch (const arguments::UsageError& error) {
      EXPECT_EQ(std::string(error.what()), "\"" + std::string(text) + "\" is no time such as 1s, 500ms or 2min, from 1ms to 1440min");
    }
  }
}

}  // namespace
}  // namespace fringix::tool
