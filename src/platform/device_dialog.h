// The device selector as the system shows it: a list of heads, an OK, a Cancel and a Rescan button. What they do is decided a floor
// above, by the DeviceDialogActions.
#pragma once

#include <cstdint>
#include <optional>

namespace fringix::platform {

// The identifiers of the controls, the same on every system.
namespace device_dialog {
inline constexpr int ok = 1;
inline constexpr int cancel = 2;
inline constexpr int list = 1001;
inline constexpr int rescan = 1005;
}  // namespace device_dialog

// What can be done to the dialog while it is open, on its own thread. Lines are counted from 0.
class DeviceDialogView {
 public:
  virtual void clearLines() noexcept = 0;
  virtual void addLine(const char* text) noexcept = 0;  // at the end, whatever it says
  virtual void setLineData(std::int32_t line, std::int32_t data) noexcept = 0;
  virtual void selectLine(std::int32_t line) noexcept = 0;
  virtual std::optional<std::int32_t> selectedLineData() const noexcept = 0;  // nothing when no line is selected
  virtual void enableOk(bool enabled) noexcept = 0;
  virtual void setWaitCursor() noexcept = 0;
  virtual void restoreCursor() noexcept = 0;         // the one before setWaitCursor()
  virtual void end(std::int32_t code) noexcept = 0;  // the dialog closes once the action under way is over

 protected:
  ~DeviceDialogView() = default;
};

class DeviceDialogActions {
 public:
  virtual void opened(DeviceDialogView& view) noexcept = 0;  // before the dialog can be seen
  // A button was pressed; whatever else closes a window counts as Cancel.
  virtual void command(DeviceDialogView& view, std::int32_t control) noexcept = 0;

 protected:
  ~DeviceDialogActions() = default;
};

// Shows the dialog before `parent` (a window handle; null: none) and blocks until it is closed. Gives the code with which it was ended,
// or nothing where it cannot be shown:
// - Windows: when the library is not loaded as DAXFringix.dll, which holds the dialog, or there is no desktop;
// - elsewhere: when libDAXFringix-dialog.so does not lie beside the library or cannot be loaded, or there is no display. `parent` is the
//   number of an X11 window there. A process calls it from one thread only, the one that uses GTK if there is one.
std::optional<std::int32_t> runDeviceDialog(void* parent, DeviceDialogActions& actions) noexcept;

}  // namespace fringix::platform
