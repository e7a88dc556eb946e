#include "platform/standard_input.h"

#include <windows.h>

#include <algorithm>
#include <climits>

namespace fringix::platform {

StandardInput::StandardInput() noexcept : native_(reinterpret_cast<std::intptr_t>(GetStdHandle(STD_INPUT_HANDLE))) {}

StandardInput::~StandardInput() = default;  // the handle is the process's

std::size_t StandardInput::read(char* buffer, std::size_t size) noexcept {
  DWORD count = 0;
  const auto limit = static_cast<DWORD>(std::min<std::size_t>(size, INT_MAX));
  return ReadFile(reinterpret_cast<HANDLE>(native_), buffer, limit, &count, nullptr) != 0 ? count : 0;
}

}  // namespace fringix::platform
