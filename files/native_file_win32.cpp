#include <windows.h>

#include <algorithm>
#include <system_error>

#include "files/native_file.h"

namespace fringix::files {
namespace {

[[noreturn]] void fail() { throw std::system_error(static_cast<int>(GetLastError()), std::system_category()); }

void require(BOOL result) {
  if (result == FALSE) fail();
}

HANDLE fileOf(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

std::intptr_t openFile(const std::filesystem::path& path, DWORD access, DWORD sharing, DWORD disposition) {
  const HANDLE file = CreateFileW(path.c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) fail();
  return reinterpret_cast<std::intptr_t>(file);
}

// A file that is to be deleted goes with its handle, and that with the process.
BOOL setToBeDeleted(std::intptr_t handle, bool deleted) {
  FILE_DISPOSITION_INFO disposition{};
  disposition.DeleteFile = deleted ? TRUE : FALSE;
  return SetFileInformationByHandle(fileOf(handle), FileDispositionInfo, &disposition, sizeof disposition);
}

void writeAll(HANDLE file, std::span<const std::uint8_t> bytes) {
  constexpr std::size_t largestWrite = std::size_t{1} << 24;
  while (!bytes.empty()) {
    DWORD count = 0;
    require(WriteFile(file, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), largestWrite)), &count, nullptr));
    bytes = bytes.subspan(count);
  }
}

}  // namespace

Entry entryAt(const std::filesystem::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Entry::none;
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return Entry::link;
  if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0) return Entry::other;
  return (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? Entry::writeProtectedFile : Entry::file;
}

InputFile::InputFile(const std::filesystem::path& path)
    : handle_(openFile(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING)) {}

InputFile::~InputFile() { CloseHandle(fileOf(handle_)); }

bool InputFile::isRegular() const { return GetFileType(fileOf(handle_)) == FILE_TYPE_DISK; }

std::uint64_t InputFile::size() const {
  LARGE_INTEGER size{};
  require(GetFileSizeEx(fileOf(handle_), &size));
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes) {
  constexpr std::size_t largestRead = std::size_t{1} << 24;
  DWORD count = 0;
  require(ReadFile(fileOf(handle_), bytes.data(), static_cast<DWORD>(std::min(bytes.size(), largestRead)), &count, nullptr));
  return count;
}

NewFile::NewFile(const std::filesystem::path& folder)
    : name_(folder / uniqueName()), handle_(openFile(name_, GENERIC_WRITE | DELETE, 0, CREATE_NEW)) {
  setToBeDeleted(handle_, true);
}

NewFile::~NewFile() {
  if (handle_ != 0) CloseHandle(fileOf(handle_));
  if (!name_.empty()) DeleteFileW(name_.c_str());  // where the system would not do it with the handle
}

void NewFile::write(std::span<const std::uint8_t> bytes) { writeAll(fileOf(handle_), bytes); }

void NewFile::takePlace(const std::filesystem::path& place) {
  require(setToBeDeleted(handle_, false));
  const HANDLE file = fileOf(handle_);
  handle_ = 0;
  require(CloseHandle(file));
  require(MoveFileExW(name_.c_str(), place.c_str(), MOVEFILE_REPLACE_EXISTING));
  name_.clear();
}

AppendedFile::AppendedFile(const std::filesystem::path& path)
    : handle_(openFile(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW)) {}

AppendedFile::~AppendedFile() { CloseHandle(fileOf(handle_)); }

void AppendedFile::append(std::span<const std::uint8_t> bytes) { writeAll(fileOf(handle_), bytes); }

void writeToStandardOutput(std::span<const std::uint8_t> bytes) { writeAll(GetStdHandle(STD_OUTPUT_HANDLE), bytes); }

}  // namespace fringix::files
