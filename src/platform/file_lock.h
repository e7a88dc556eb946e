// A file that is held by one owner at a time, of all processes of the machine.
#pragma once

#include <cstdint>
#include <filesystem>

namespace fringix::platform {

// Holds the file while it lives. The system lets go of it when the process dies, however it dies, so no lock is ever stale. The file
// itself stays, empty: removing it would give two owners the same name.
class FileLock {
 public:
  enum class State {
    held,
    taken,  // somebody else holds the file
    denied  // the file is not there and may not be made, or may not be opened
  };

  // Makes the file when it is missing, and follows no link in its place. Never waits. Throws std::system_error for what is none of
  // the states.
  explicit FileLock(const std::filesystem::path& file);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  State state() const noexcept { return state_; }

 private:
  std::intptr_t native_;
  State state_ = State::held;
};

}  // namespace fringix::platform
