// The public header as C and C++ see it; tests/abi/interface has the layout of its records.
#include <gtest/gtest.h>

#include "abi/c_user.h"

namespace {

TEST(HeaderTest, ACProgramReachesEveryFunction) { EXPECT_EQ(c_user_walk(), 0); }

}  // namespace
