// A folder of its own for each test, removed afterwards.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fringix::test {

class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

std::string readBytes(const std::filesystem::path& path);
void writeBytes(const std::filesystem::path& path, const std::string& bytes);
std::vector<std::string> namesIn(const std::filesystem::path& folder);  // in their order

}  // namespace fringix::test
