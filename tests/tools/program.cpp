#include "program.h"

#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include "shell.h"

namespace fringix::test {

Outcome runProgram(const std::filesystem::path& program, const std::string& arguments) {
  const ScratchFolder scratch;
  const std::filesystem::path native = std::filesystem::absolute(program).make_preferred();
  const std::string command =
      inQuotes(native) + " " + arguments + " > " + inQuotes(scratch / "output") + " 2> " + inQuotes(scratch / "errors");
  const int exitCode = runShell(command);
  return {exitCode, readText(scratch / "output"), readText(scratch / "errors")};
}

ScratchFolder::ScratchFolder()
    : path_(std::filesystem::temp_directory_path() / ("fringix-test-" + std::to_string(std::random_device{}()))) {
  if (!std::filesystem::create_directory(path_)) throw std::runtime_error(path_.string() + " exists already");
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string readBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::string readText(const std::filesystem::path& path) {
  std::string text = readBytes(path);
  std::erase(text, '\r');
  return text;
}

std::string inQuotes(const std::filesystem::path& path) { return "\"" + path.string() + "\""; }

}  // namespace fringix::test
