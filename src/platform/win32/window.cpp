#include "platform/window.h"

#include <windows.h>

namespace fringix::platform {

Window::Window(WindowHandle handle) noexcept : handle_(handle) {}

void Window::post(std::uint32_t message, std::uint64_t event, std::int64_t parameter) const noexcept {
  const HWND window = static_cast<HWND>(handle_);
  if (IsWindow(window)) PostMessageW(window, message, event, parameter);
}

}  // namespace fringix::platform
