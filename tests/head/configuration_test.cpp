#include <gtest/gtest.h>

#include <string>

#include "head/model/configuration.h"

namespace fringix::head {
namespace {

class ConfigurationTest : public testing::Test {
 protected:
  std::int32_t read(const ConfigurationKey& key) {
    std::int32_t value = -1;
    EXPECT_EQ(configuration.read(key, value), Status::ok);
    return value;
  }

  Configuration configuration{HeadSettings{}};
};

TEST_F(ConfigurationTest, TellsWhatTheHeadIs) {
  EXPECT_EQ(read({"Head", "SerialNumber"}), 1001);
  EXPECT_EQ(read({"Head", "ProtocolVersion"}), 3300);
  EXPECT_EQ(read({"Camera", "Channels"}), 2);
  EXPECT_EQ(read({"Camera", "Width"}), 1280);
  EXPECT_EQ(read({"Camera", "Height"}), 1024);
  EXPECT_EQ(read({"Projector", "Width"}), 1280);
  EXPECT_EQ(read({"Projector", "Height"}), 800);
}

TEST_F(ConfigurationTest, WhatTheHeadIsCannotBeWritten) {
  EXPECT_EQ(configuration.write({"Head", "SerialNumber"}, 1002), Status::badParameter);
  EXPECT_EQ(read({"Head", "SerialNumber"}), 1001);
}

TEST_F(ConfigurationTest, AnUnknownKeyHasTheValueZeroAndAStatus) {
  std::int32_t value = -1;
  EXPECT_EQ(configuration.read({"Head", "serialnumber"}, value), Status::unknownKey);
  EXPECT_EQ(value, 0);
}

TEST_F(ConfigurationTest, KeepsNewValuesBySectionAndKey) {
  EXPECT_EQ(configuration.write({"Mine", "a"}, -12), Status::ok);
  EXPECT_EQ(configuration.write({"Other", "a"}, 13), Status::ok);
  EXPECT_EQ(read({"Mine", "a"}), -12);
  EXPECT_EQ(configuration.write({"Mine", "a"}, 14), Status::ok);
  EXPECT_EQ(read({"Mine", "a"}), 14);
  EXPECT_EQ(read({"Other", "a"}), 13);
}

TEST_F(ConfigurationTest, ExposureIsAValueWithARange) {
  EXPECT_EQ(configuration.exposure(), 20000);
  EXPECT_EQ(configuration.write({"Camera", "Exposure"}, 100), Status::ok);
  EXPECT_EQ(configuration.write({"Camera", "Exposure"}, 99), Status::badParameter);
  EXPECT_EQ(configuration.exposure(), 100);
  EXPECT_EQ(configuration.write({"Camera", "Exposure"}, 100000), Status::ok);
  EXPECT_EQ(configuration.write({"Camera", "Exposure"}, 100001), Status::badParameter);
  EXPECT_EQ(read({"Camera", "Exposure"}), 100000);
  EXPECT_DOUBLE_EQ(configuration.exposureFactor(), 5);
}

TEST_F(ConfigurationTest, NamesHaveALimit) {
  const std::string longest(64, 'x');
  EXPECT_EQ(configuration.write({longest, longest}, 1), Status::ok);
  EXPECT_EQ(configuration.write({longest + "x", "a"}, 1), Status::badParameter);
  EXPECT_EQ(configuration.write({"a", longest + "x"}, 1), Status::badParameter);
  EXPECT_EQ(configuration.write({"", "a"}, 1), Status::badParameter);
  EXPECT_EQ(configuration.write({"a", ""}, 1), Status::badParameter);
}

TEST_F(ConfigurationTest, NoClientFillsTheHeadsMemory) {
  int accepted = 0;
  for (int i = 0; i < 2000; ++i) accepted += configuration.write({"Mine", std::to_string(i)}, i) == Status::ok ? 1 : 0;
  EXPECT_EQ(accepted, 1000 - 8) << "8 are the head's own";
  EXPECT_EQ(configuration.write({"Mine", "new"}, 1), Status::outOfMemory);
  EXPECT_EQ(configuration.write({"Mine", "0"}, 5), Status::ok) << "what is there can still be changed";
}

}  // namespace
}  // namespace fringix::head
