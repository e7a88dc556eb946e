#include "heads/host_name.h"

#include <gtest/gtest.h>

#include <thread>

#include "console/explain.h"

namespace fringix::tool {
namespace {

using namespace std::chrono_literals;

TEST(HostName, AddressesNamesAndTheHeadsPortAreFine) {
  for (const char* text : {"192.168.0.10", "0.0.0.0", "255.255.255.255", "localhost", "head-3.cell_2.example.", "192.168.0.10:44330",
                           "localhost:44330", "3head"})
    EXPECT_EQ(whatIsWrongWithAddress(text), "") << text;
}

TEST(HostName, WhatIsNeitherAddressNorNameIsRefused) {
  for (const char* text : {"", "192.168.0", "192.168.0.256", "192.168.0.1.2", "192.168.0.010", "1.2.3.", "1..2.3", "head 3", "-h", ".head",
                           "http://192.168.0.10", "192.168.0.10:", ":44330", "192.168.0.10:http", "192.168.0.10/24", "1921680010"})
    EXPECT_EQ(whatIsWrongWithAddress(text),
              "\"" + std::string(text) + "\" is neither an IPv4 address such as 192.168.0.10 nor a host's name");
  EXPECT_NE(whatIsWrongWithAddress(std::string(254, 'a')), "");
}

TEST(HostName, AnotherPortIsRefusedWithTheReason) {
  EXPECT_EQ(whatIsWrongWithAddress("192.168.0.10:8080"),
            "\"192.168.0.10:8080\" names port 8080, but heads are always reached on port 44330: leave \":8080\" away");
}

TEST(HostName, TheNewerAddressesAreRefusedWithTheReason) {
  EXPECT_EQ(whatIsWrongWithAddress("fe80::1"),
            "\"fe80::1\" looks like an IPv6 address, but heads have IPv4 addresses such as 192.168.0.10");
}

TEST(HostName, AddressesNeedNoLookUp) {
  EXPECT_EQ(resolveAddress("192.0.2.7", 0s), "192.0.2.7");
  EXPECT_EQ(resolveAddress("192.0.2.7:44330", 0s), "192.0.2.7");
}

TEST(HostName, NamesAreLookedUpWithoutThePort) {
  const auto ask = [](const std::string& name) { return name == "head3" ? LookUp{"192.0.2.3", {}} : LookUp{{}, "not asked for"}; };
  EXPECT_EQ(resolveAddress("head3", 20s, ask), "192.0.2.3");
  EXPECT_EQ(resolveAddress("head3:44330", 20s, ask), "192.0.2.3");
}

// Of names a machine may know none, not even its own, and its name server may not answer: the system is asked for a number.
TEST(HostName, TheSystemTellsWhatItFound) { EXPECT_EQ(lookUp("192.0.2.7").address, "192.0.2.7"); }

TEST(HostName, TheSystemTellsWhyItFoundNothing) { EXPECT_NE(lookUp(std::string(300, 'a')).reason, ""); }

TEST(HostName, UnknownNamesAreToldWithTheReason) {
  try {
    resolveAddress("head.invalid", 20s, [](const std::string& name) { return LookUp{{}, name + " is in no book"}; });
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.explanation().what, "the name \"head.invalid\" has no IPv4 address: head.invalid is in no book");
    EXPECT_EQ(failure.explanation().kind, "unknown-name");
  }
}

TEST(HostName, ALookUpThatTakesTooLongIsLeft) {
  try {
    resolveAddress("head.invalid", 10ms, [](const std::string&) {
      std::this_thread::sleep_for(1h);
      return LookUp{};
    });
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_NE(failure.explanation().what.find("no answer within 0.01 s"), std::string::npos) << failure.explanation().what;
  }
}

}  // namespace
}  // namespace fringix::tool
