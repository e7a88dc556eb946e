#include "arguments/number.h"

#include <gtest/gtest.h>

#include "arguments/usage_error.h"

namespace fringix::arguments {
namespace {

template <class Number>
std::string complaint(const std::string& text, const Limits& limits = {}) {
  try {
    return "taken as " + std::to_string(toNumber<Number>(text, limits));
  } catch (const UsageError& error) {
    return error.what();
  }
}

TEST(Number, IsAllOfTheText) {
  for (const char* text : {"", " ", "abc", "1a", "1 ", " 1", "1.5", "1,5", "--1", "0x", "0xG", "+1"})
    EXPECT_EQ(complaint<std::int32_t>(text, {1, 999999}), "\"" + std::string(text) + "\" is no number from 1 to 999999");
}

TEST(Number, IsDecimalOrHexadecimal) {
  EXPECT_EQ(toNumber<std::int32_t>("-12", {}), -12);
  EXPECT_EQ(toNumber<std::uint32_t>("010", {}), 10U) << "a zero in front means nothing";
  EXPECT_EQ(toNumber<std::uint32_t>("0xff", {}), 255U);
  EXPECT_EQ(toNumber<double>("2.5", {}), 2.5);
}

TEST(Number, LiesWithinItsRange) {
  EXPECT_EQ(toNumber<std::int32_t>("1", {1, 3}), 1);
  EXPECT_EQ(toNumber<std::int32_t>("3", {1, 3}), 3);
  for (const char* text : {"0", "4", "-1", "99999999999999999999"})
    EXPECT_EQ(complaint<std::int32_t>(text, {1, 3}), "\"" + std::string(text) + "\" is no number from 1 to 3");
  EXPECT_EQ(complaint<double>("100.5", {0, 100}), "\"100.5\" is no number from 0 to 100");
  EXPECT_EQ(complaint<double>("nan", {0, 100}), "\"nan\" is no number from 0 to 100");
}

TEST(Number, HasTheRangeOfItsType) {
  EXPECT_EQ(toNumber<std::uint32_t>("4294967295", {}), 4294967295U);
  EXPECT_EQ(complaint<std::uint32_t>("4294967296"), "\"4294967296\" is no number from 0 to 4294967295");
  EXPECT_EQ(complaint<std::uint32_t>("-1"), "\"-1\" is no number from 0 to 4294967295");
  EXPECT_EQ(complaint<std::int32_t>("2147483648"), "\"2147483648\" is no number from -2147483648 to 2147483647");
}

TEST(Number, WithoutAnEndHasNoneInTheMessage) {
  EXPECT_EQ(complaint<std::uint64_t>("0", {.low = 1}), "\"0\" is no number of at least 1");
  EXPECT_EQ(complaint<std::uint64_t>("-1"), "\"-1\" is no number of at least 0");
  EXPECT_EQ(complaint<std::int64_t>("x"), "\"x\" is no number");
}

}  // namespace
}  // namespace fringix::arguments
