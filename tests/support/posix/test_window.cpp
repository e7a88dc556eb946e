#include "support/test_window.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace fringix::test {

struct TestWindow::Native {
  int reading = -1;
  int writing = -1;
};

TestWindow::TestWindow() : native_(std::make_unique<Native>()) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  native_->reading = ends[0];
  native_->writing = ends[1];
}

TestWindow::~TestWindow() { destroy(); }

void TestWindow::destroy() {
  if (native_->reading < 0) return;
  close(native_->reading);
  close(native_->writing);
  native_->reading = -1;
}

void* TestWindow::handle() const { return reinterpret_cast<void*>(static_cast<std::intptr_t>(native_->writing)); }

std::vector<Post> TestWindow::posts() {
  std::vector<Post> posts;
  std::array<char, 24> record;
  while (read(native_->reading, record.data(), record.size()) == static_cast<ssize_t>(record.size())) {
    Post post{};
    std::memcpy(&post.message, record.data(), 4);
    std::memcpy(&post.event, record.data() + 8, 8);
    std::memcpy(&post.parameter, record.data() + 16, 8);
    posts.push_back(post);
  }
  return posts;
}

}  // namespace fringix::test
