#include "heads/watch_queue.h"

#include <utility>

namespace fringix::tool {

void WatchQueue::put(HeadEvent event) {
  const std::lock_guard lock(mutex_);
  content_.events.push_back(std::move(event));
  changed_.notify_one();
}

void WatchQueue::put(HeadNews news) {
  const std::lock_guard lock(mutex_);
  content_.news.push_back(std::move(news));
  changed_.notify_one();
}

WatchQueue::Content WatchQueue::take(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, limit, [this] { return !content_.events.empty() || !content_.news.empty(); });
  return std::exchange(content_, {});
}

}  // namespace fringix::tool
