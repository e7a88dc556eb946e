#include "files/growing_file.h"

#include <utility>

#include "files/explained.h"
#include "files/native_file.h"

namespace fringix::files {

GrowingFile::GrowingFile(std::string path) : path_(std::move(path)) {
  if (entryAt(pathOf(path_)) != Entry::none) refuse("write", path_, "there is such a file already; name another one");
  explained("write", path_, [&] { file_ = std::make_unique<AppendedFile>(pathOf(path_)); });
}

GrowingFile::~GrowingFile() = default;

void GrowingFile::append(std::span<const std::uint8_t> bytes) {
  explained("write", path_, [&] { file_->append(bytes); });
}

SequentialFile::SequentialFile(std::string path) : path_(std::move(path)) {
  explained("read", path_, [&] { file_ = std::make_unique<InputFile>(pathOf(path_)); });
  if (!file_->isRegular()) refuse("read", path_, "it is no regular file");
}

SequentialFile::~SequentialFile() = default;

std::size_t SequentialFile::read(std::span<std::uint8_t> bytes) {
  std::size_t size = 0;
  explained("read", path_, [&] {
    while (const std::size_t count = file_->read(bytes.subspan(size))) size += count;
  });
  return size;
}

}  // namespace fringix::files
