#include "head/model/folder_store.h"

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "head/model/data_name.h"

namespace fringix::head {

namespace {

namespace fs = std::filesystem;

// Where a block arrives before it takes its place; no block has such a name.
constexpr const char* incoming = ".incoming";

// A link could lead out of the folder, so it is no block; neither is a pipe, at which a reader would wait.
bool isBlock(const fs::path& file) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(file, error));
}

std::uint64_t sizeOf(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  return error ? 0 : size;
}

bool writeFile(const fs::path& file, const Block& block) {
  std::ofstream output(file, std::ios::binary | std::ios::trunc);
  output.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(block.size()));
  output.close();
  return output.good();
}

}  // namespace

FolderStore::FolderStore(fs::path folder, std::size_t capacity) : DataStore(capacity), folder_(std::move(folder)) {
  std::error_code error;
  fs::create_directories(folder_, error);
  if (!fs::is_directory(folder_, error)) throw std::runtime_error("cannot make the folder \"" + folder_.string() + "\" for data blocks");
}

std::uint64_t FolderStore::sizeWithout(const std::string& name) const {
  std::uint64_t sum = 0;
  std::error_code error;
  for (fs::directory_iterator file(folder_, error), end; !error && file != end; file.increment(error)) {
    const std::string other = file->path().filename().string();
    if (other != name && isDataName(other) && isBlock(file->path())) sum += sizeOf(file->path());
  }
  return sum;
}

Status FolderStore::write(const std::string& name, Block block) {
  const fs::path arriving = folder_ / incoming;
  std::error_code error;
  fs::remove(arriving, error);
  if (writeFile(arriving, block)) {
    fs::rename(arriving, folder_ / name, error);
    if (!error) return Status::ok;
  }
  fs::remove(arriving, error);
  return Status::storageFailed;
}

SharedBlock FolderStore::read(const std::string& name) const {
  const fs::path file = folder_ / name;
  if (!isBlock(file) || sizeOf(file) > capacity()) return nullptr;
  auto block = std::make_shared<Block>(static_cast<std::size_t>(sizeOf(file)));
  std::ifstream input(file, std::ios::binary);
  input.read(reinterpret_cast<char*>(block->data()), static_cast<std::streamsize>(block->size()));
  return input ? block : nullptr;
}

}  // namespace fringix::head
