// The device dialog of the real library where nothing can be shown.
#include <gtest/gtest.h>

#include <cstdlib>

#include "fringix/fringix.h"

namespace {

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

TEST(DeviceDialogAbsenceTest, WithoutADisplayTheRecordIsUntouched) {
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) GTEST_SKIP() << "there is a display";
  const char* const address = "10.0.0.1";
  DeviceKeyEntry record = {77, 78, address};
  EXPECT_EQ(SLShowDeviceDialog(nullptr, &record), SLALL_OKAY);
  EXPECT_EQ(record.serial, 77);
  EXPECT_EQ(record.info1, 78);
  EXPECT_EQ(record.ipAddress, address);
}

}  // namespace
