// fringix-head with a recording, at 127.0.0.3.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "support/child_process.h"

namespace fringix::test {

class ReplayingHead {
 public:
  explicit ReplayingHead(const std::filesystem::path& file, std::vector<std::string> options = {"--at-once"})
      : program_(FRINGIX_HEAD, arguments(file, std::move(options))) {
    EXPECT_NE(program_.waitForLine("ready: "), "");
  }

  // The next line that is told.
  std::string told() { return program_.nextLine().value_or("nothing"); }
  // Whatever was told, from which the addresses of clients are removed.
  std::string difference() {
    const std::string line = told();
    const std::size_t at = line.find("differs: ");
    return at == line.npos ? line : line.substr(at + 9);
  }

  // Ends it as a person does, where a program can do that to another.
  void endWith(int exitCode) {
    if (program_.interrupt()) {
      EXPECT_EQ(program_.wait(), exitCode);
    } else {
      program_.kill();
    }
    const auto more = program_.nextLine();
    EXPECT_EQ(more.value_or("nothing more"), "nothing more");
  }

 private:
  ChildProcess program_;

  static std::vector<std::string> arguments(const std::filesystem::path& file, std::vector<std::string> options) {
    options.insert(options.begin(), {"--replay", file.string(), "--address", "127.0.0.3"});
    return options;
  }
};

}  // namespace fringix::test
