// What differs between the command interpreters behind std::system.
#pragma once

#include <filesystem>
#include <string>

namespace fringix::test {

// Runs a command line with double-quoted words and redirections; gives its exit code, or -1 when it did not end by itself.
int runShell(const std::string& command);

// The same with files as standard input, unless its name is empty, and as outputs.
int runWithFiles(const std::string& command, const std::filesystem::path& input, const std::filesystem::path& output,
                 const std::filesystem::path& errors);

}  // namespace fringix::test
