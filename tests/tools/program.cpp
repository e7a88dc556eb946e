#include "program.h"

#include "shell.h"

namespace fringix::test {

Outcome runProgram(const std::filesystem::path& program, const std::string& arguments, const std::filesystem::path& input) {
  const ScratchFolder scratch;
  const std::filesystem::path native = std::filesystem::absolute(program).make_preferred();
  const int exitCode = runWithFiles(inQuotes(native) + " " + arguments, input, scratch / "output", scratch / "errors");
  return {exitCode, readText(scratch / "output"), readText(scratch / "errors"), readBytes(scratch / "output")};
}

std::string readText(const std::filesystem::path& path) {
  std::string text = readBytes(path);
  std::erase(text, '\r');
  return text;
}

std::string inQuotes(const std::filesystem::path& path) { return "\"" + path.string() + "\""; }

}  // namespace fringix::test
