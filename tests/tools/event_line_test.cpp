#include "console/event_line.h"

#include <gtest/gtest.h>

#include "support/pattern.h"

namespace fringix::tool {
namespace {

HeadEvent event(std::int32_t number) {
  return {std::chrono::system_clock::time_point(std::chrono::milliseconds(1795264215007)), "127.0.0.2", number, 1001};
}

TEST(EventLine, IsAlignedForPeople) {
  const std::string line = "20\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:15\\.007  127\\.0\\.0\\.2        head 1001  trigger";
  EXPECT_TRUE(test::matches(formatEvent(event(1)), line)) << formatEvent(event(1));
}

TEST(EventLine, IsOneLineOfJsonInUniversalTime) {
  EXPECT_EQ(formatEventAsJson(event(1)), R"({"time":"2026-11-21T12:30:15.007Z","address":"127.0.0.2","serial":1001,"event":"trigger"})");
}

TEST(EventLine, NewsOfAHeadAreAlignedWithItsEvents) {
  const HeadNews news{event(1).time, "127.0.0.2", HeadNews::Kind::lost, "it is off"};
  const std::string line = "20\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:15\\.007  127\\.0\\.0\\.2        lost: it is off";
  EXPECT_TRUE(test::matches(formatNews(news), line)) << formatNews(news);
  EXPECT_EQ(formatNewsAsJson(news), R"({"time":"2026-11-21T12:30:15.007Z","address":"127.0.0.2","state":"lost","text":"it is off"})");
}

TEST(EventLine, NewsNameTheState) {
  const auto said = [](HeadNews::Kind kind) { return formatNews({event(1).time, "127.0.0.2", kind, {}}).substr(42); };
  EXPECT_EQ(said(HeadNews::Kind::missing), "not there");
  EXPECT_EQ(said(HeadNews::Kind::silent), "does not answer");
  EXPECT_EQ(said(HeadNews::Kind::answers), "answers again");
  EXPECT_EQ(said(HeadNews::Kind::lost), "lost");
  EXPECT_EQ(said(HeadNews::Kind::back), "back");
}

TEST(EventLine, NamesEvents) {
  EXPECT_NE(formatEvent(event(0)).find("  measurement"), std::string::npos);
  EXPECT_NE(formatEvent(event(7)).find("  event 7"), std::string::npos) << "of a later library";
}

}  // namespace
}  // namespace fringix::tool
