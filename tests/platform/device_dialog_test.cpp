#include "platform/device_dialog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace fringix::platform {

namespace {

class CountedActions final : public DeviceDialogActions {
 public:
  void opened(DeviceDialogView&) noexcept override { ++calls; }
  void command(DeviceDialogView&, std::int32_t) noexcept override { ++calls; }

  int calls = 0;
};

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// On Windows this program does not load the DLL that holds the dialog; elsewhere there is no display.
TEST(DeviceDialogServiceTest, IsNotShownWhereItCannotBe) {
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) GTEST_SKIP() << "there is a display";
  CountedActions actions;
  EXPECT_EQ(runDeviceDialog(nullptr, actions), std::nullopt);
  EXPECT_EQ(actions.calls, 0);
}

}  // namespace

}  // namespace fringix::platform
