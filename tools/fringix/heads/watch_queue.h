// What is heard of watched heads, on its way from their threads, which must not wait for a reader of the output, to the one that prints.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "console/event_line.h"

namespace fringix::tool {

class WatchQueue {
 public:
  struct Content {
    std::vector<HeadEvent> events;
    std::vector<HeadNews> news;
  };

  void put(HeadEvent event);
  void put(HeadNews news);

  Content take(std::chrono::milliseconds limit);  // what has come; waits for it up to `limit`

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  Content content_;
};

}  // namespace fringix::tool
