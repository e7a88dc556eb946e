// The public header as C and C++ see it, and the layout of its records.
#include <gtest/gtest.h>

#include <cstddef>

#include "abi/c_user.h"
#include "fringix/fringix.h"

namespace {

static_assert(offsetof(DeviceKeyEntry, serial) == 0);
static_assert(offsetof(DeviceKeyEntry, info1) == 4);
static_assert(offsetof(DeviceKeyEntry, ipAddress) == 8);
static_assert(sizeof(DeviceKeyEntry) == 16);

static_assert(offsetof(DeviceKeyEntryEx, reserved) == 0);
static_assert(offsetof(DeviceKeyEntryEx, serial) == 4);
static_assert(offsetof(DeviceKeyEntryEx, info1) == 8);
static_assert(offsetof(DeviceKeyEntryEx, ipAddress) == 16);
static_assert(offsetof(DeviceKeyEntryEx, modelName) == 24);
static_assert(offsetof(DeviceKeyEntryEx, info2) == 32);
static_assert(offsetof(DeviceKeyEntryEx, info3) == 36);
static_assert(offsetof(DeviceKeyEntryEx, info4) == 40);
static_assert(offsetof(DeviceKeyEntryEx, info5) == 44);
static_assert(offsetof(DeviceKeyEntryEx, info6) == 48);
static_assert(offsetof(DeviceKeyEntryEx, info7) == 52);
static_assert(sizeof(DeviceKeyEntryEx) == 56);

TEST(HeaderTest, ACProgramReachesEveryFunction) { EXPECT_EQ(c_user_walk(), 0); }

}  // namespace
