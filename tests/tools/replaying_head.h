// A recording from which a client is answered at 127.0.0.3, in this process.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>

#include "head/replay/replay_server.h"

namespace fringix::test {

class ReplayingHead {
 public:
  explicit ReplayingHead(const std::filesystem::path& file, bool atOnce = true)
      : server_({file.string(), atOnce}, "127.0.0.3",
                [this](head::ReplayServer::News news, const std::string&, const std::string& text) { take(news, text); }) {
    server_.start();
  }

  // The next difference that is told.
  std::string difference() {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(20), [&] { return !told_.empty(); })) return "none";
    std::string text = told_.front();
    told_.pop_front();
    return text;
  }

  // In all, when the clients have gone.
  std::size_t differences(int clients) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, std::chrono::seconds(20), [&] { return left_ == clients; }));
    return server_.differences();
  }

 private:
  using News = head::ReplayServer::News;

  void take(News news, const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (news == News::disconnected) ++left_;
    if (news == News::difference || news == News::trouble) told_.push_back(text);
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> told_;
  int left_ = 0;
  head::ReplayServer server_;
};

}  // namespace fringix::test
