// Collects what a head tells, and lets a test wait for it.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "head/serving/session.h"

namespace fringix::head {

class Notes {
 public:
  Observer observer() {
    return [this](Happening happening, const std::string&, const std::string& text) {
      const std::lock_guard lock(mutex_);
      told_.emplace_back(happening, text);
      changed_.notify_all();
    };
  }

  bool waitFor(Happening happening, const std::string& part) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), [&] {
      for (const auto& [told, text] : told_) {
        if (told == happening && text.find(part) != std::string::npos) return true;
      }
      return false;
    });
  }

  std::size_t count(Happening happening) {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(told_.begin(), told_.end(), [=](const auto& note) { return note.first == happening; }));
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::pair<Happening, std::string>> told_;
};

}  // namespace fringix::head
