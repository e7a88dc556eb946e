// A window of the host, as the system knows it: it gets what the library posts.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <vector>

namespace fringix::test {

struct Post {
  std::uint32_t message;
  std::uint64_t event;
  std::int64_t parameter;
  bool operator==(const Post&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Post& post) {
  return out << "message " << post.message << ", event " << post.event << ", parameter " << post.parameter;
}

class TestWindow {
 public:
  TestWindow();
  ~TestWindow();
  TestWindow(const TestWindow&) = delete;
  TestWindow& operator=(const TestWindow&) = delete;

  void* handle() const;
  void destroy();
  std::vector<Post> posts();  // those that have arrived since the last call; on the thread that made the window

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

}  // namespace fringix::test
