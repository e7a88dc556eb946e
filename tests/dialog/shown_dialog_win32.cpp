#include <windows.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "shown_dialog.h"

namespace fringix::test {

namespace {

constexpr int listIdentifier = 1001;

HWND makeWindow() {
  return CreateWindowExA(0, "Static", "Parent", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
}

HWND findDialog() { return FindWindowA("#32770", "Device selector"); }

LRESULT ask(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0) {
  DWORD_PTR result = 0;
  if (SendMessageTimeoutA(window, message, first, second, SMTO_NORMAL, 10000, &result) == 0) {
    throw std::runtime_error("the dialog does not react");
  }
  return static_cast<LRESULT>(result);
}

HWND control(void* dialog, int identifier) {
  const HWND window = GetDlgItem(static_cast<HWND>(dialog), identifier);
  if (window == nullptr) throw std::runtime_error("there is no control " + std::to_string(identifier));
  return window;
}

std::string textOf(HWND window) {
  char text[100] = "";
  ask(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
  return text;
}

ControlKind kindOf(HWND window) {
  char name[100] = "";
  GetClassNameA(window, name, sizeof name);
  if (std::string(name) == "ComboBox") return ControlKind::list;
  if (std::string(name) == "Button") return ControlKind::button;
  if (std::string(name) == "Static") return ControlKind::label;
  throw std::runtime_error(std::string("a control of class ") + name);
}

ShownControl describe(HWND window) {
  const LONG_PTR style = GetWindowLongPtrA(window, GWL_STYLE);
  const ControlKind kind = kindOf(window);
  return {kind,
          static_cast<int>(GetWindowLongPtrA(window, GWLP_ID)),
          kind == ControlKind::list ? "" : textOf(window),
          (style & WS_VISIBLE) != 0,
          (style & WS_TABSTOP) != 0,
          kind == ControlKind::button && (style & BS_TYPEMASK) == BS_DEFPUSHBUTTON};
}

}  // namespace

std::string whyNoDisplay() {
  const HWND window = makeWindow();
  if (window == nullptr) return "no window can be made here";
  DestroyWindow(window);
  return "";
}

ShownDialog::ShownDialog() : window_(nullptr) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (window_ == nullptr || !IsWindowVisible(static_cast<HWND>(window_))) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("no dialog is shown");
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    window_ = findDialog();
  }
}

std::vector<ShownControl> ShownDialog::controls() const {
  std::vector<ShownControl> found;
  for (HWND child = GetWindow(static_cast<HWND>(window_), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
    found.push_back(describe(child));
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.identifier < b.identifier; });
  return found;
}

std::vector<ShownLine> ShownDialog::lines() const {
  const HWND list = control(window_, listIdentifier);
  std::vector<ShownLine> found(static_cast<std::size_t>(ask(list, CB_GETCOUNT)));
  for (std::size_t line = 0; line < found.size(); ++line) {
    char text[100] = "";
    ask(list, CB_GETLBTEXT, line, reinterpret_cast<LPARAM>(text));
    found[line] = {text, static_cast<std::int32_t>(ask(list, CB_GETITEMDATA, line))};
  }
  return found;
}

int ShownDialog::selectedLine() const { return static_cast<int>(ask(control(window_, listIdentifier), CB_GETCURSEL)); }

void ShownDialog::selectLine(int line) const { ask(control(window_, listIdentifier), CB_SETCURSEL, static_cast<WPARAM>(line)); }

bool ShownDialog::enabled(int identifier) const { return IsWindowEnabled(control(window_, identifier)) != 0; }

void ShownDialog::press(int identifier) const { ask(control(window_, identifier), BM_CLICK); }

void ShownDialog::closeWindow() const { ask(static_cast<HWND>(window_), WM_SYSCOMMAND, SC_CLOSE); }

void ShownDialog::pressEscape() const { PostMessageA(control(window_, listIdentifier), WM_KEYDOWN, VK_ESCAPE, 0); }

bool ShownDialog::standsBefore(void* parent) const {
  return GetWindow(static_cast<HWND>(window_), GW_OWNER) == parent && IsWindowEnabled(static_cast<HWND>(parent)) == 0;
}

ParentWindow::ParentWindow() : window_(makeWindow()) {}
ParentWindow::~ParentWindow() { DestroyWindow(static_cast<HWND>(window_)); }
void* ParentWindow::handle() const { return window_; }

}  // namespace fringix::test
