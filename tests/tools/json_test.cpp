#include "console/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

namespace fringix::tool {
namespace {

Json someHead() { return Json::object({{"serial", 7}, {"ports", Json::array({1, "two"})}, {"none", nullptr}, {"empty", Json::array({})}}); }

TEST(JsonText, IsOneLine) { EXPECT_EQ(someHead().line(), R"({"serial":7,"ports":[1,"two"],"none":null,"empty":[]})"); }

TEST(JsonText, IsIndentedForPeople) {
  EXPECT_EQ(someHead().indented(),
            "{\n"
            "  \"serial\": 7,\n"
            "  \"ports\": [\n"
            "    1,\n"
            "    \"two\"\n"
            "  ],\n"
            "  \"none\": null,\n"
            "  \"empty\": []\n"
            "}");
}

TEST(JsonText, KeepsEveryCharacter) {
  for (const std::string text : {"\"quoted\" \\ back", "tab\t, line\n, bell\a", "K\u00F6pfe \u2192 \u5F62 \U0001F600", ""})
    EXPECT_EQ(nlohmann::json::parse(Json(text).line()), text) << text;
  const std::string nul("a\0b", 3);
  EXPECT_EQ(nlohmann::json::parse(Json(nul).line()), nul);
}

TEST(JsonText, BytesThatAreNoTextAreReplaced) {
  EXPECT_EQ(Json("a\xFFz").line(), "\"a\uFFFDz\"");
  EXPECT_EQ(Json("\xC3").line(), "\"\uFFFD\"") << "cut off";
  EXPECT_EQ(Json("\xC0\xAF").line(), "\"\uFFFD\uFFFD\"") << "overlong";
  EXPECT_EQ(Json("\xE0\x80\xAF").line(), "\"\uFFFD\uFFFD\uFFFD\"") << "overlong";
  EXPECT_EQ(Json("\xED\xA0\x80").line(), "\"\uFFFD\uFFFD\uFFFD\"") << "half of a pair";
  EXPECT_EQ(Json("\xF4\x90\x80\x80").line(), "\"\uFFFD\uFFFD\uFFFD\uFFFD\"") << "beyond the last character";
}

TEST(JsonText, KeepsNumbers) {
  EXPECT_EQ(Json(std::numeric_limits<std::int64_t>::min()).line(), "-9223372036854775808");
  EXPECT_EQ(Json(0.1).line(), "0.1");
  EXPECT_EQ(Json(true).line(), "true");
  EXPECT_EQ(Json(std::numeric_limits<double>::infinity()).line(), "null") << "JSON has none";
}

}  // namespace
}  // namespace fringix::tool
