#include <gtest/gtest.h>

#include "fringix/fringix.h"

namespace {

struct Name {
  std::int32_t code;
  const char* name;
};

class StatusNameTest : public testing::TestWithParam<Name> {};

TEST_P(StatusNameTest, IsAsDocumented) {
  EXPECT_STREQ(SLErrorcodeToChar(GetParam().code), GetParam().name);
  EXPECT_EQ(SLErrorcodeToChar(GetParam().code), SLErrorcodeToChar(GetParam().code)) << "one constant text";
}

INSTANTIATE_TEST_SUITE_P(Codes, StatusNameTest,
                         testing::Values(Name{0, "SLALL_OKAY"}, Name{-2, "SLUNKNOWN_DEVICE_ID"}, Name{-3, "SLBAD_PARAMETER"},
                                         Name{-4, "SLSYSTEM_ERROR"}, Name{-10, "SLCONNECTION_ERROR"}, Name{-20, "SLUNKNOWN_SEQUENCE_ID"},
                                         Name{-30, "SLMEASUREMENT_FAILED"}, Name{-31, "SLVERSION_MISMATCH"},
                                         // These two codes are part of the interface and have no name on purpose.
                                         Name{-11, "Unknown SL-Error Code"}, Name{-40, "Unknown SL-Error Code"},
                                         Name{1, "Unknown SL-Error Code"}, Name{-1, "Unknown SL-Error Code"}));

TEST(VersionTest, Is4002) { EXPECT_EQ(QORFringixVersion(), 4002); }

}  // namespace
