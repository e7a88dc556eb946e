#include "support/test_window.h"

#include <windows.h>

#include <stdexcept>

namespace fringix::test {

struct TestWindow::Native {
  HWND window = nullptr;
};

// A message-only window: it needs no screen.
TestWindow::TestWindow() : native_(std::make_unique<Native>()) {
  native_->window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  if (native_->window == nullptr) throw std::runtime_error("no window");
}

TestWindow::~TestWindow() { destroy(); }

void TestWindow::destroy() {
  if (native_->window != nullptr && IsWindow(native_->window)) DestroyWindow(native_->window);
}

void* TestWindow::handle() const { return native_->window; }

std::vector<Post> TestWindow::posts() {
  std::vector<Post> posts;
  for (MSG message; PeekMessageW(&message, native_->window, WM_APP, 0xBFFF, PM_REMOVE) != 0;) {
    posts.push_back({message.message, message.wParam, message.lParam});
  }
  return posts;
}

}  // namespace fringix::test
