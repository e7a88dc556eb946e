#include "platform/device_dialog.h"

#include <windows.h>

namespace fringix::platform {

namespace {

// Of the dialog template in resources/.
constexpr WORD templateIdentifier = 101;

class Dialog final : public DeviceDialogView {
 public:
  explicit Dialog(DeviceDialogActions& actions) noexcept : actions_(actions) {}

  static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_INITDIALOG) {
      SetWindowLongPtrA(window, DWLP_USER, second);
      reinterpret_cast<Dialog*>(second)->open(window);
      return TRUE;  // the system places the focus
    }
    auto* const dialog = reinterpret_cast<Dialog*>(GetWindowLongPtrA(window, DWLP_USER));
    if (message != WM_COMMAND || dialog == nullptr) return FALSE;
    dialog->actions_.command(*dialog, LOWORD(first));
    return TRUE;
  }

  void clearLines() noexcept override { list(CB_RESETCONTENT); }
  void addLine(const char* text) noexcept override { list(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text)); }
  void setLineData(std::int32_t line, std::int32_t data) noexcept override { list(CB_SETITEMDATA, static_cast<WPARAM>(line), data); }
  void selectLine(std::int32_t line) noexcept override { list(CB_SETCURSEL, static_cast<WPARAM>(line)); }

  std::optional<std::int32_t> selectedLineData() const noexcept override {
    const LRESULT line = list(CB_GETCURSEL);
    if (line == CB_ERR) return std::nullopt;
    return static_cast<std::int32_t>(list(CB_GETITEMDATA, static_cast<WPARAM>(line)));
  }

  void enableOk(bool enabled) noexcept override { EnableWindow(GetDlgItem(window_, device_dialog::ok), enabled); }

  void setWaitCursor() noexcept override {
    const HCURSOR shown = SetCursor(waitCursor_);
    if (shown != waitCursor_) previousCursor_ = shown;
  }
  void restoreCursor() noexcept override { SetCursor(previousCursor_); }

  void end(std::int32_t code) noexcept override { EndDialog(window_, code); }

 private:
  void open(HWND window) noexcept {
    window_ = window;
    waitCursor_ = LoadCursorW(nullptr, IDC_WAIT);
    actions_.opened(*this);
  }

  LRESULT list(UINT message, WPARAM first = 0, LPARAM second = 0) const noexcept {
    return SendDlgItemMessageA(window_, device_dialog::list, message, first, second);
  }

  DeviceDialogActions& actions_;
  HWND window_ = nullptr;
  HCURSOR waitCursor_ = nullptr;
  HCURSOR previousCursor_ = nullptr;
};

}  // namespace

std::optional<std::int32_t> runDeviceDialog(void* parent, DeviceDialogActions& actions) noexcept {
  const HMODULE library = GetModuleHandleA("DAXFringix.dll");
  if (library == nullptr) return std::nullopt;
  Dialog dialog(actions);
  const INT_PTR result = DialogBoxParamA(library, MAKEINTRESOURCEA(templateIdentifier), static_cast<HWND>(parent), Dialog::procedure,
                                         reinterpret_cast<LPARAM>(&dialog));
  constexpr INT_PTR noSuchParent = 0;
  constexpr INT_PTR failed = -1;
  if (result == noSuchParent || result == failed) return std::nullopt;
  return static_cast<std::int32_t>(result);
}

}  // namespace fringix::platform
