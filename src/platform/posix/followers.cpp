#include "platform/posix/followers.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/posix/local_name.h"
#include "platform/posix/retry_pause.h"

namespace fringix::platform {

namespace {

// Descriptors that the sessions of other users cost this process.
constexpr std::ptrdiff_t mostOfOneUser = 64;
constexpr std::ptrdiff_t mostOfOthers = 256;

constexpr int takenInAtOnce = 16;  // triggers come first
constexpr int crowdedPause = 100;  // milliseconds, while no descriptor is left to take another one in

}  // namespace

void Followers::askForTheName() noexcept {
  listening_ = listenUnderTheName();
  if (listening_.valid()) return;
  pause_ = longerPause(pause_);
  rest(pause_);
}

void Followers::prepare(std::vector<pollfd>& entries) {
  if (!listening_.valid() && !resting()) askForTheName();
  entries.push_back({resting() ? -1 : listening_.handle(), POLLIN, 0});  // poll passes over -1
  for (const Follower& follower : followers_) entries.push_back({follower.pipe.handle(), POLLIN, 0});
}

void Followers::look(const pollfd* entries) noexcept {
  dropThoseThatLeft(entries + 1);
  if (entries->revents != 0) takeSomeIn();
}

int Followers::pollLimit() const noexcept {
  if (!resting()) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(due_ - Clock::now());
  return std::max(0, static_cast<int>(left.count()));
}

bool Followers::nameIsTaken() const noexcept { return !listening_.valid() && pause_ == longestRetryPause; }

// Other users believe nobody but root: with a pipe of anybody else they could only do harm.
bool Followers::hasRoomFor(uid_t user) const noexcept {
  if (isBelieved(user)) return true;
  const auto count = [&](auto&& which) { return std::count_if(followers_.begin(), followers_.end(), which); };
  return userOf(listening_) == root && count([&](const Follower& one) { return one.user == user; }) < mostOfOneUser &&
         count([](const Follower& one) { return !isBelieved(one.user); }) < mostOfOthers;
}

// False: there is no descriptor left. One that is not taken in sees its connection end, and tries again.
bool Followers::takeIn(Socket connection) {
  struct Dismissal {
    Socket& connection;
    ~Dismissal() { closeUnread(std::move(connection)); }
  } const dismissal{connection};
  const uid_t user = userOf(connection);
  if (!hasRoomFor(user)) return true;
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  const Socket reading(ends[0]);
  Socket writing(ends[1]);
  if (sendDescriptor(connection, reading)) followers_.push_back({std::move(writing), user});
  return true;
}

void Followers::takeSomeIn() noexcept {
  bool room = !manyAreClosing();
  for (int i = 0; room && i < takenInAtOnce; ++i) {
    Socket connection(accept4(listening_.handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection.valid()) {
      room = errno == EAGAIN || errno == ECONNABORTED || errno == EINTR;
      break;
    }
    try {
      room = takeIn(std::move(connection)) && !manyAreClosing();
    } catch (...) {
      room = false;
    }
  }
  if (!room) rest(crowdedPause);
}

// The pipe of one that has left is broken.
void Followers::dropThoseThatLeft(const pollfd* pipes) noexcept {
  for (std::size_t i = followers_.size(); i > 0; --i) {
    if (pipes[i - 1].revents != 0) followers_.erase(followers_.begin() + static_cast<std::ptrdiff_t>(i - 1));
  }
}

// A follower that takes no more is one that does not run: it misses triggers, and nobody waits for it. The signal of a broken pipe is
// blocked in worker threads.
void Followers::tell(std::uint32_t sender) const noexcept {
  for (const Follower& follower : followers_) {
    [[maybe_unused]] const ssize_t written = write(follower.pipe.handle(), &sender, sizeof sender);
  }
}

void Followers::leave() noexcept {
  closeListening(std::move(listening_));  // first: the name is free when the followers see their pipes end
  followers_.clear();
  due_ = {};
  pause_ = 0;
}

}  // namespace fringix::platform
