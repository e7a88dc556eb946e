// Files that are written bit by bit, and read bit by bit. Every failure is a std::runtime_error that names the file and the system's
// reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace fringix::files {

class AppendedFile;
class InputFile;

// A new file; one that is there already is not overwritten. Others may read it meanwhile, and what was appended stays however the
// process ends.
class GrowingFile {
 public:
  explicit GrowingFile(std::string path);
  ~GrowingFile();

  const std::string& path() const { return path_; }
  void append(std::span<const std::uint8_t> bytes);

 private:
  std::string path_;
  std::unique_ptr<AppendedFile> file_;
};

// A regular file, from its beginning to its end.
class SequentialFile {
 public:
  explicit SequentialFile(std::string path);
  ~SequentialFile();

  const std::string& path() const { return path_; }
  std::size_t read(std::span<std::uint8_t> bytes);  // fewer only at the end

 private:
  std::string path_;
  std::unique_ptr<InputFile> file_;
};

}  // namespace fringix::files
