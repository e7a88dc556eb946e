// What the system has to offer for files beyond the standard library. Every failure is a std::system_error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace fringix::files {

// What has a name in a folder. Links are not followed.
enum class Entry { none, file, writeProtectedFile, link, other };

Entry entryAt(const std::filesystem::path& path);

// A file to read. Opening one never waits, not even for the other end of a pipe.
class InputFile {
 public:
  explicit InputFile(const std::filesystem::path& path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool isRegular() const;
  std::uint64_t size() const;
  std::size_t read(std::span<std::uint8_t> bytes);  // 0 at the end

 private:
  std::intptr_t handle_;
};

// A new file in a folder that nobody else finds there. It is gone when its object or the process ends before it has taken its place,
// as far as the system and the file system can see to that; else a file ".fringix-*.part" stays.
class NewFile {
 public:
  explicit NewFile(const std::filesystem::path& folder);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(std::span<const std::uint8_t> bytes);
  void takePlace(const std::filesystem::path& place);  // of the same folder, or of the file that is there; the last that is called

 private:
  std::filesystem::path name_;  // empty while it has none
  std::intptr_t handle_;
};

// A new file that others may read while it grows. There must be none of that name.
class AppendedFile {
 public:
  explicit AppendedFile(const std::filesystem::path& path);
  ~AppendedFile();
  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;

  void append(std::span<const std::uint8_t> bytes);

 private:
  std::intptr_t handle_;
};

// Past the buffer of the standard library, without any change to the bytes.
void writeToStandardOutput(std::span<const std::uint8_t> bytes);

// Differs from every other one, of this process and others.
std::filesystem::path uniqueName();

}  // namespace fringix::files
