// A small simulated head with "fringix record" before it.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "head/serving/head_server.h"
#include "program.h"
#include "small_head.h"
#include "support/child_process.h"

namespace fringix::test {

class RecordedHead : public testing::Test {
 protected:
  explicit RecordedHead(const head::HeadSettings& settings = smallHead()) : server_(settings) { server_.start(); }

  void record(std::vector<std::string> options = {}, const std::string& name = "a.fxr") {
    const std::vector<std::string> usual{"record", "127.0.0.1", "--listen", "127.0.0.3", "-o", (scratch_ / name).string()};
    options.insert(options.begin(), usual.begin(), usual.end());
    recorder_.emplace(FRINGIX_TOOL, options);
    EXPECT_NE(recorder_->waitForLine("recording 127.0.0.1 for clients at 127.0.0.3, end with Ctrl-C"), "");
  }

  // Of a recorder that was told how many connections to take.
  void waitForItsEnd() { EXPECT_EQ(recorder_->wait(), 0); }

  Outcome recording(const std::string& arguments) const { return runProgram(FRINGIX_TOOL, "recording " + arguments); }
  Outcome show(const std::string& options = "", const std::string& name = "a.fxr") const {
    return recording("show " + inQuotes(scratch_ / name) + " " + options);
  }

  const ScratchFolder scratch_;
  head::HeadServer server_;
  std::optional<ChildProcess> recorder_;
};

inline bool has(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

}  // namespace fringix::test
