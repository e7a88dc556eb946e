// The public header as C and C++ see it, and the layout of its record.
#include <gtest/gtest.h>

#include <cstddef>

#include "abi/c_user.h"
#include "fringix/fringix.h"

namespace {

static_assert(offsetof(DeviceKeyEntry, serial) == 0);
static_assert(offsetof(DeviceKeyEntry, info1) == 4);
static_assert(offsetof(DeviceKeyEntry, ipAddress) == 8);
static_assert(sizeof(DeviceKeyEntry) == 16);

TEST(HeaderTest, ACProgramReachesEveryFunction) { EXPECT_EQ(c_user_walk(), 0); }

}  // namespace
