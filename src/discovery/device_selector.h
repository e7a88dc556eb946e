// What the device selector does: it fills its list with the heads that a scan finds, and confirms the user's choice with a fresh scan.
// It knows no window system. One object for one showing, used on the thread of the dialog.
#pragma once

#include <cstdint>

#include "fringix/fringix.h"
#include "platform/device_dialog.h"

namespace fringix {

// The exported functions that the selector works with.
struct KeyList {
  std::int32_t (*scan)(std::int32_t* count);
  std::int32_t (*entry)(std::int32_t index, DeviceKeyEntry* entry);
};

class DeviceSelector final : public platform::DeviceDialogActions {
 public:
  // The codes with which the dialog ends.
  static constexpr std::int32_t chosen = 10;
  static constexpr std::int32_t unconfirmed = -10;
  static constexpr std::int32_t cancelled = -20;

  // `result` receives the choice; it is left alone when the user cancels.
  DeviceSelector(const KeyList& keys, DeviceKeyEntry& result) noexcept : keys_(keys), result_(result) {}

  void opened(platform::DeviceDialogView& view) noexcept override { fill(view); }
  void command(platform::DeviceDialogView& view, std::int32_t command) noexcept override;

 private:
  void fill(platform::DeviceDialogView& view) noexcept;
  void list(platform::DeviceDialogView& view, std::int32_t count) const noexcept;
  void confirm(platform::DeviceDialogView& view) noexcept;
  bool findAgain(std::int32_t serial, DeviceKeyEntry& found) const noexcept;

  const KeyList keys_;
  DeviceKeyEntry& result_;
  bool busy_ = false;  // while the list is being filled
};

}  // namespace fringix
