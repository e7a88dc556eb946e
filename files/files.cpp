#include "files/files.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace fringix::files {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void refuse(const char* verb, const std::string& path, int reason) {
  throw std::runtime_error(fmt::format("cannot {} \"{}\": {}", verb, path, std::strerror(reason)));
}

File openFile(const char* verb, const std::string& path, const char* mode) {
  File file(std::fopen(path.c_str(), mode));
  if (!file) refuse(verb, path, errno);
  return file;
}

}  // namespace

std::vector<std::uint8_t> readFile(const std::string& path) {
  constexpr std::size_t step = std::size_t{1} << 20;
  const File file = openFile("read", path, "rb");
  std::vector<std::uint8_t> bytes;
  std::size_t size = 0;
  std::size_t count = step;
  while (count == step) {
    bytes.resize(size + step);
    count = std::fread(&bytes[size], 1, step, file.get());
    size += count;
  }
  if (std::ferror(file.get()) != 0) refuse("read", path, errno);
  bytes.resize(size);
  return bytes;
}

void requireWritable(const std::string& path) {
  std::error_code unknown;
  const bool existed = std::filesystem::exists(path, unknown);
  openFile("write", path, "ab");
  if (!existed) std::remove(path.c_str());
}

void writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  File file = openFile("write", path, "wb");
  errno = 0;
  const bool written = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  const bool closed = std::fclose(file.release()) == 0;
  if (!written || !closed) refuse("write", path, errno);
}

std::string numberedPath(const std::string& path, std::size_t number, std::size_t last) {
  const std::string suffix = fmt::format("-{:0{}}", number, fmt::formatted_size("{}", last));
  const std::size_t name = path.find_last_of("/\\") + 1;  // npos + 1 is 0: the whole path is the name
  const std::size_t dot = path.rfind('.');
  const bool hasExtension = dot != std::string::npos && dot > name;
  return hasExtension ? path.substr(0, dot) + suffix + path.substr(dot) : path + suffix;
}

}  // namespace fringix::files
