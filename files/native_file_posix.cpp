#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "files/native_file.h"

namespace fringix::files {
namespace {

constexpr mode_t newFileMode = 0666;
constexpr mode_t permissions = 0777;

[[noreturn]] void fail() { throw std::system_error(errno, std::generic_category()); }

int require(int result) {
  if (result < 0) fail();
  return result;
}

template <typename Call>
auto retried(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

int descriptorOf(std::intptr_t handle) { return static_cast<int>(handle); }

struct stat stateOf(std::intptr_t handle) {
  struct stat state {};
  require(fstat(descriptorOf(handle), &state));
  return state;
}

std::string openFilePath(std::intptr_t handle) { return "/proc/self/fd/" + std::to_string(handle); }

// Has no name and therefore leaves nothing behind; -1 where the file system has no such files, or they could not get a name later.
int openNameless(const std::filesystem::path& folder) {
  const int descriptor = retried([&] { return open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, newFileMode); });
  if (descriptor < 0 || access(openFilePath(descriptor).c_str(), F_OK) == 0) return descriptor;
  close(descriptor);
  return -1;
}

int createFile(const std::filesystem::path& path) {
  return require(retried([&] { return open(path.c_str(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, newFileMode); }));
}

// Ctrl-C and its like wait while it lives: the process is not to end with a file that has the wrong name. The library's threads take none.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, &before_);
  }
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

 private:
  sigset_t before_{};
};

void writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = retried([&] { return write(descriptor, bytes.data(), bytes.size()); });
    if (count < 0) fail();
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace

Entry entryAt(const std::filesystem::path& path) {
  struct stat state {};
  if (lstat(path.c_str(), &state) != 0) return Entry::none;
  if (S_ISLNK(state.st_mode)) return Entry::link;
  if (!S_ISREG(state.st_mode)) return Entry::other;
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? Entry::file : Entry::writeProtectedFile;
}

InputFile::InputFile(const std::filesystem::path& path)
    : handle_(require(retried([&] { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }))) {}

InputFile::~InputFile() { close(descriptorOf(handle_)); }

bool InputFile::isRegular() const { return S_ISREG(stateOf(handle_).st_mode); }

std::uint64_t InputFile::size() const { return static_cast<std::uint64_t>(stateOf(handle_).st_size); }

std::size_t InputFile::read(std::span<std::uint8_t> bytes) {
  const ssize_t count = retried([&] { return ::read(descriptorOf(handle_), bytes.data(), bytes.size()); });
  if (count < 0) fail();
  return static_cast<std::size_t>(count);
}

NewFile::NewFile(const std::filesystem::path& folder) : handle_(openNameless(folder)) {
  if (handle_ >= 0) return;
  name_ = folder / uniqueName();
  handle_ = createFile(name_);
}

NewFile::~NewFile() {
  if (handle_ >= 0) close(descriptorOf(handle_));
  if (!name_.empty()) unlink(name_.c_str());
}

void NewFile::write(std::span<const std::uint8_t> bytes) { writeAll(descriptorOf(handle_), bytes); }

void NewFile::takePlace(const std::filesystem::path& place) {
  struct stat older {};
  if (lstat(place.c_str(), &older) == 0) require(fchmod(descriptorOf(handle_), older.st_mode & permissions));
  const HeldSignals held;
  if (name_.empty()) {
    std::filesystem::path name = place.parent_path() / uniqueName();
    require(linkat(AT_FDCWD, openFilePath(handle_).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW));
    name_ = std::move(name);  // to copy it would take memory, and it is already to be removed
  }
  const int descriptor = descriptorOf(handle_);
  handle_ = -1;
  require(close(descriptor));  // the last to tell that the disk is full
  require(rename(name_.c_str(), place.c_str()));
  name_.clear();
}

AppendedFile::AppendedFile(const std::filesystem::path& path) : handle_(createFile(path)) {}

AppendedFile::~AppendedFile() { close(descriptorOf(handle_)); }

void AppendedFile::append(std::span<const std::uint8_t> bytes) { writeAll(descriptorOf(handle_), bytes); }

void writeToStandardOutput(std::span<const std::uint8_t> bytes) { writeAll(STDOUT_FILENO, bytes); }

}  // namespace fringix::files
