#include "head/model/folder_store.h"

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "files/files.h"
#include "head/model/data_name.h"

namespace fringix::head {

namespace {

namespace fs = std::filesystem;

constexpr const char* lockName = ".lock";

// A link could lead out of the folder, so it is no block; neither is a pipe, at which a reader would wait.
bool isBlock(const fs::path& file) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(file, error));
}

std::uint64_t bytesOf(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  return error ? 0 : size;
}

fs::path made(fs::path folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder, error)) throw std::runtime_error("cannot make the folder \"" + folder.string() + "\" for data blocks");
  return folder;
}

}  // namespace

FolderStore::FolderStore(fs::path folder, std::size_t capacity)
    : DataStore(capacity), folder_(made(std::move(folder))), lock_(folder_ / lockName) {
  if (lock_.state() == platform::FileLock::State::taken) {
    throw std::runtime_error("another head keeps its data blocks in the folder \"" + folder_.string() +
                             "\": end that one, or give this one a folder of its own");
  }
}

DataStore::Content FolderStore::contentWithout(const std::string& name) const {
  Content content;
  std::error_code error;
  for (fs::directory_iterator file(folder_, error), end; !error && file != end; file.increment(error)) {
    const std::string other = file->path().filename().string();
    if (other == name || !isDataName(other) || !isBlock(file->path())) continue;
    content.bytes += bytesOf(file->path());
    ++content.blocks;
  }
  return content;
}

std::size_t FolderStore::sizeOf(const std::string& name) const {
  const fs::path file = folder_ / name;
  const std::uint64_t bytes = isBlock(file) ? bytesOf(file) : 0;
  return bytes <= capacity() ? static_cast<std::size_t>(bytes) : 0;
}

Status FolderStore::write(const std::string& name, Block block) {
  try {
    files::writeFile((folder_ / name).string(), block);
    return Status::ok;
  } catch (const std::runtime_error&) {
    return Status::storageFailed;
  }
}

SharedBlock FolderStore::read(const std::string& name) const {
  auto block = std::make_shared<Block>(sizeOf(name));
  if (block->empty()) return nullptr;
  std::ifstream input(folder_ / name, std::ios::binary);
  input.read(reinterpret_cast<char*>(block->data()), static_cast<std::streamsize>(block->size()));
  return input ? block : nullptr;
}

}  // namespace fringix::head
