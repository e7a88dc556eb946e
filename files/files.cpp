#include "files/files.h"

#include <fmt/format.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "files/explained.h"
#include "files/native_file.h"

namespace fringix::files {

void refuse(const char* verb, const std::string& path, const std::string& reason) {
  const std::string file = path == standardOutput ? "standard output" : fmt::format("\"{}\"", path);
  throw std::runtime_error(fmt::format("cannot {} {}: {}", verb, file, reason));
}

namespace {

void requireSize(const std::string& path, std::uint64_t size, std::uint64_t limit) {
  if (size > limit) refuse("read", path, fmt::format("it has {} bytes, and at most {} are taken", size, limit));
}

std::vector<std::uint8_t> readToTheEnd(InputFile& file, const std::string& path, std::uint64_t limit) {
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file.size()) + 1);  // one more, which only a file that grows fills
  std::size_t size = 0;
  while (const std::size_t count = file.read(std::span(bytes).subspan(size))) {
    size += count;
    requireSize(path, size, limit);
    if (size == bytes.size()) bytes.resize(2 * size);
  }
  bytes.resize(size);
  return bytes;
}

std::filesystem::path folderOf(const std::filesystem::path& place) {
  return place.has_parent_path() ? place.parent_path() : std::filesystem::path(".");
}

// Whoever may change a folder can put a link there in place of the file between this look and the end of the writing. It is not
// followed then either, it is replaced.
void requireReplaceable(const std::string& path) {
  switch (entryAt(pathOf(path))) {
    case Entry::none:
    case Entry::file:
      return;
    case Entry::link:
      refuse("write", path, "it is a link; name the file that it leads to");
    case Entry::writeProtectedFile:
      refuse("write", path, "it is write-protected");
    case Entry::other:
      refuse("write", path, "it is no regular file");
  }
}

}  // namespace

std::vector<std::uint8_t> readFile(const std::string& path, std::uint64_t limit) {
  return explained("read", path, [&] {
    InputFile file(pathOf(path));
    if (!file.isRegular()) refuse("read", path, "it is no regular file");
    requireSize(path, file.size(), limit);
    return readToTheEnd(file, path, limit);
  });
}

void requireWritable(const std::string& path) {
  if (path == standardOutput) return;
  requireReplaceable(path);
  explained("write", path, [&] { const NewFile probe(folderOf(pathOf(path))); });
}

void writeFile(const std::string& path, std::span<const std::uint8_t> bytes) {
  explained("write", path, [&] {
    if (path == standardOutput) return writeToStandardOutput(bytes);
    NewFile file(folderOf(pathOf(path)));
    file.write(bytes);
    requireReplaceable(path);
    file.takePlace(pathOf(path));
  });
}

std::FILE* reportStream(const std::string& path) { return path == standardOutput ? stderr : stdout; }

bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code unknown;
  return std::filesystem::equivalent(pathOf(one), pathOf(other), unknown);
}

std::string numberedPath(const std::string& path, std::size_t number, std::size_t last) {
  const std::string suffix = fmt::format("-{:0{}}", number, std::to_string(last).size());
  const std::size_t name = path.find_last_of("/\\") + 1;  // npos + 1 is 0: the whole path is the name
  const std::size_t dot = path.rfind('.');
  const bool hasExtension = dot != std::string::npos && dot > name;
  return hasExtension ? path.substr(0, dot) + suffix + path.substr(dot) : path + suffix;
}

std::string inFolder(const std::string& folder, const std::string& name) {
  const std::u8string path = (pathOf(folder) / pathOf(name)).u8string();
  return {path.begin(), path.end()};
}

void makeFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(pathOf(folder), error);
  if (error) throw std::runtime_error("cannot make the folder \"" + folder + "\": " + error.message());
}

bool exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(pathOf(path), error);
}

}  // namespace fringix::files
