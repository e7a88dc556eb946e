#include "json/json_value.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <stdexcept>

namespace fringix {
namespace {

using Kind = JsonValue::Kind;

std::string reasonAgainst(const std::string& text) {
  try {
    parseJson(text);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(JsonValueTest, HasTheKindsOfJson) {
  const JsonValue all = parseJson(R"({"a": null, "b": true, "c": 1, "d": 1.5, "e": "text", "f": [], "g": {}})");
  ASSERT_EQ(all.kind, Kind::object);
  const std::pair<const char*, Kind> kinds[] = {{"a", Kind::nothing}, {"b", Kind::truth}, {"c", Kind::number}, {"d", Kind::number},
                                                {"e", Kind::text},    {"f", Kind::array}, {"g", Kind::object}};
  for (const auto& [name, kind] : kinds) {
    ASSERT_NE(all.find(name), nullptr) << name;
    EXPECT_EQ(all.find(name)->kind, kind) << name;
  }
  EXPECT_TRUE(all.find("b")->truth);
  EXPECT_FALSE(parseJson("false").truth);
  EXPECT_EQ(all.find("c")->integer, 1);
  EXPECT_EQ(all.find("d")->integer, std::nullopt);
  EXPECT_EQ(all.find("d")->number, 1.5);
  EXPECT_EQ(all.find("h"), nullptr);
}

TEST(JsonValueTest, OfSeveralMembersWithOneNameTheLastOneCounts) { EXPECT_EQ(parseJson(R"({"a": 1, "a": 2})").find("a")->integer, 2); }

TEST(JsonValueTest, IsWrittenWithALineForEachValue) {
  const std::string text =
      "{\n  \"a\": [\n    1,\n    -0.5\n  ],\n  \"b\": \"\\n\",\n  \"c\": [],\n  \"d\": {},\n  \"e\": true,\n  \"f\": null\n}";
  EXPECT_EQ(jsonLines(parseJson(text)), text);
}

TEST(JsonValueTest, IsWrittenInOneLine) {
  const std::string text = R"({"a":[1,-0.5,1.0],"b":{"c":false},"d":[]})";
  EXPECT_EQ(jsonLine(parseJson(text)), text);
}

TEST(JsonValueTest, IsMadeOfWhatItHolds) {
  const JsonValue made({"whole", "large", "real", "text", "truth", "list"},
                       {1, std::size_t{5'000'000'000}, 1.0, "a \"b\"", true, JsonValue::arrayOf(std::array{1, 2})});
  EXPECT_EQ(jsonLine(made), R"({"whole":1,"large":5000000000,"real":1.0,"text":"a \"b\"","truth":true,"list":[1,2]})");
}

TEST(JsonValueTest, IsNotNestedDeeperThan100Levels) {
  EXPECT_EQ(reasonAgainst(std::string(100, '[') + std::string(100, ']')), "");
  EXPECT_EQ(reasonAgainst(std::string(101, '[') + std::string(101, ']')), "it is nested deeper than 100 levels");
  EXPECT_EQ(reasonAgainst(std::string(100000, '[')), "it is nested deeper than 100 levels");
}

TEST(JsonValueTest, WhatIsWrongIsToldWithItsPlaceAndNoNumberOfTheParser) {
  EXPECT_EQ(reasonAgainst("{\n  \"a\": }").substr(0, 33), "parse error at line 2, column 8: ");
}

}  // namespace
}  // namespace fringix
