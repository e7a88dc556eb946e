// A small simulated head and what is said to it, recorded in this process.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "console/explain.h"
#include "head/serving/head_server.h"
#include "recording/recorder.h"
#include "recordings/listing.h"
#include "relay/relay.h"
#include "small_head.h"
#include "support/eventually.h"
#include "support/scratch_folder.h"

namespace fringix::test {

class RecordedHead : public testing::Test {
 protected:
  explicit RecordedHead(const head::HeadSettings& settings = smallHead()) : server_(settings) { server_.start(); }

  // At 127.0.0.3, into a.fxr.
  void record(bool compressed = false) {
    relay_.emplace(tool::RelaySettings{"127.0.0.1", "127.0.0.3", std::chrono::seconds(5)},
                   [this](const std::string& what) { warnings_ += what; });
    recording::Header header = relay_->header();
    header.compressed = compressed;
    recorder_.emplace(path("a.fxr"), header);
    relay_->start(*recorder_);
  }

  // When so many connections have ended.
  void finishRecording(std::size_t connections) {
    EXPECT_TRUE(eventually([&] { return relay_->endedConnections() == connections; }));
    relay_.reset();
    recorder_->finish();
    EXPECT_EQ(recorder_->failure() + warnings_, "");
    recorder_.reset();
  }

  std::string path(const std::string& name) const { return (scratch_ / name).string(); }

  // What the tool shows of a recording, and says of it.
  struct Shown {
    std::string output;
    std::string errors;
    std::string failure;
  };
  Shown show(const std::string& name = "a.fxr", bool json = false) const {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::string failure;
    try {
      tool::showRecording(path(name), json);
    } catch (const tool::Failure& error) {
      failure = error.what();
    }
    Shown shown{testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr(), failure};
    for (std::string* const text : {&shown.output, &shown.errors}) std::erase(*text, '\r');
    return shown;
  }

  const ScratchFolder scratch_;
  head::HeadServer server_;
  std::string warnings_;
  std::optional<recording::Recorder> recorder_;
  std::optional<tool::Relay> relay_;
};

inline bool has(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

}  // namespace fringix::test
