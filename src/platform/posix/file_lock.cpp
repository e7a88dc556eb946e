#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace fringix::platform {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::system_error(errno, std::generic_category(), "cannot lock \"" + file.string() + "\"");
}

// The lock of a network's file system needs a file that is open for writing; for another owner's file reading will do elsewhere.
int openForLock(const std::filesystem::path& file) {
  constexpr int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int writable = ::open(file.c_str(), O_RDWR | O_CREAT | flags, 0644);
  return writable < 0 && errno == EACCES ? ::open(file.c_str(), O_RDONLY | flags) : writable;
}

bool isDenial(int error) { return error == EACCES || error == EPERM || error == EROFS || error == ENOENT; }

}  // namespace

FileLock::FileLock(const std::filesystem::path& file) : native_(openForLock(file)) {
  if (native_ < 0 && !isDenial(errno)) fail(file);
  if (native_ < 0) {
    state_ = State::denied;
  } else if (flock(static_cast<int>(native_), LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    close(static_cast<int>(native_));
    native_ = -1;
    errno = error;
    if (error != EWOULDBLOCK) fail(file);
    state_ = State::taken;
  }
}

FileLock::~FileLock() {
  if (native_ >= 0) close(static_cast<int>(native_));
}

}  // namespace fringix::platform
