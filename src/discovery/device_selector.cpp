#include "discovery/device_selector.h"

#include <cstdio>

namespace fringix {

using platform::DeviceDialogView;
namespace control = platform::device_dialog;

namespace {

// No control has this identifier.
constexpr std::int32_t cursorCommand = 32;

void addEntry(DeviceDialogView& view, std::int32_t index, const DeviceKeyEntry& entry) noexcept {
  char line[64];
  std::snprintf(line, sizeof line, " Serial: %i   (IP: %s)", entry.serial, entry.ipAddress);
  view.addLine(line);
  view.setLineData(index, entry.serial);
}

}  // namespace

void DeviceSelector::command(DeviceDialogView& view, std::int32_t command) noexcept {
  switch (command) {
    case control::ok:
      return confirm(view);
    case control::cancel:
      return view.end(cancelled);
    case control::rescan:
      return fill(view);
    case cursorCommand:  // kept on purpose
      if (busy_) view.setWaitCursor();
      return;
    default:
      return;
  }
}

void DeviceSelector::fill(DeviceDialogView& view) noexcept {
  view.setWaitCursor();
  busy_ = true;
  std::int32_t count = 0;
  if (keys_.scan(&count) == SLALL_OKAY) list(view, count);
  view.restoreCursor();
  busy_ = false;
}

void DeviceSelector::list(DeviceDialogView& view, std::int32_t count) const noexcept {
  view.clearLines();
  view.enableOk(count != 0);
  if (count == 0) view.addLine("No devices available");
  for (std::int32_t index = 0; index < count; ++index) {
    DeviceKeyEntry entry = {};
    if (keys_.entry(index, &entry) != SLALL_OKAY) return;  // with the lines so far, none of them selected; kept on purpose
    addEntry(view, index, entry);
  }
  view.selectLine(0);
}

void DeviceSelector::confirm(DeviceDialogView& view) noexcept {
  const std::optional<std::int32_t> serial = view.selectedLineData();
  DeviceKeyEntry found = {};
  const bool confirmed = serial.has_value() && findAgain(*serial, found);
  result_ = confirmed ? found : DeviceKeyEntry{-1, -1, nullptr};
  view.end(confirmed ? chosen : unconfirmed);
}

// The list is fetched anew on purpose: a head that has gone since it was shown cannot be chosen.
bool DeviceSelector::findAgain(std::int32_t serial, DeviceKeyEntry& found) const noexcept {
  std::int32_t count = 0;
  if (keys_.scan(&count) != SLALL_OKAY) return false;
  for (std::int32_t index = 0; index < count; ++index) {
    if (keys_.entry(index, &found) != SLALL_OKAY) return false;
    if (found.serial == serial) return true;
  }
  return false;
}

}  // namespace fringix
