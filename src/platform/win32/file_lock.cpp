#include "platform/file_lock.h"

#include <windows.h>

#include <system_error>

namespace fringix::platform {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file, DWORD error) {
  throw std::system_error(static_cast<int>(error), std::system_category(), "cannot lock \"" + file.string() + "\"");
}

// Others may open it, so that a program that reads all files is not taken for an owner.
HANDLE openForLock(const std::filesystem::path& file) {
  constexpr DWORD everything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  return CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, everything, nullptr, OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

bool isDenial(DWORD error) { return error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT || error == ERROR_PATH_NOT_FOUND; }

bool lock(HANDLE file) {
  OVERLAPPED start{};
  return LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start) != 0;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& file) : native_(reinterpret_cast<std::intptr_t>(openForLock(file))) {
  const auto handle = reinterpret_cast<HANDLE>(native_);
  if (handle == INVALID_HANDLE_VALUE) {
    if (const DWORD error = GetLastError(); !isDenial(error)) fail(file, error);
    state_ = State::denied;
  } else if (!lock(handle)) {
    const DWORD error = GetLastError();
    CloseHandle(handle);
    native_ = reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE);
    if (error != ERROR_LOCK_VIOLATION && error != ERROR_IO_PENDING) fail(file, error);
    state_ = State::taken;
  }
}

FileLock::~FileLock() {
  if (reinterpret_cast<HANDLE>(native_) != INVALID_HANDLE_VALUE) CloseHandle(reinterpret_cast<HANDLE>(native_));
}

}  // namespace fringix::platform
