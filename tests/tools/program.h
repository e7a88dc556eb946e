// Programs run as a user runs them: from a command line, with their outputs read back.
#pragma once

#include <filesystem>
#include <string>

#include "support/scratch_folder.h"

namespace fringix::test {

struct Outcome {
  int exitCode = -1;
  std::string output;  // as text
  std::string errors;
  std::string bytes;  // of the output as they are
};

// Words of `arguments` with blanks are to be in double quotes. Without a file of its own the program has the test's standard input.
Outcome runProgram(const std::filesystem::path& program, const std::string& arguments, const std::filesystem::path& input = {});

std::string readText(const std::filesystem::path& path);  // with line ends as C has them
std::string inQuotes(const std::filesystem::path& path);

}  // namespace fringix::test
