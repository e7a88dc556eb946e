// Programs run as a user runs them: from a command line, with their outputs read back.
#pragma once

#include <filesystem>
#include <string>

namespace fringix::test {

struct Outcome {
  int exitCode = -1;
  std::string output;
  std::string errors;
};

// Words of `arguments` with blanks are to be in double quotes.
Outcome runProgram(const std::filesystem::path& program, const std::string& arguments);

// A folder of its own for each test, removed afterwards.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

std::string readBytes(const std::filesystem::path& path);
std::string readText(const std::filesystem::path& path);  // with line ends as C has them
std::string inQuotes(const std::filesystem::path& path);

}  // namespace fringix::test
