// The listeners that follow the receiver. It has the name that they look for, hands a pipe to each of them, and tells all of them the
// sender of every trigger. Nothing here waits for any of them.
#pragma once

#include <poll.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include "platform/socket.h"

namespace fringix::platform {

class Followers {
 public:
  ~Followers() { leave(); }

  // Around a poll: asks for the name as long as somebody else has it, and says what is to be watched; then looks at what happened.
  void prepare(std::vector<pollfd>& entries);
  void look(const pollfd* entries) noexcept;
  int pollLimit() const noexcept;  // milliseconds until there is something to do, -1: until something happens

  bool nameIsTaken() const noexcept;  // for longer than a listener needs to leave
  void tell(std::uint32_t sender) const noexcept;
  void leave() noexcept;

 private:
  using Clock = std::chrono::steady_clock;
  struct Follower {
    Socket pipe;
    uid_t user;
  };

  void askForTheName() noexcept;
  void rest(int milliseconds) noexcept { due_ = Clock::now() + std::chrono::milliseconds(milliseconds); }
  bool resting() const noexcept { return due_ != Clock::time_point{} && Clock::now() < due_; }
  bool hasRoomFor(uid_t user) const noexcept;
  bool takeIn(Socket connection);
  void takeSomeIn() noexcept;
  void dropThoseThatLeft(const pollfd* pipes) noexcept;

  Socket listening_;
  std::vector<Follower> followers_;
  Clock::time_point due_{};  // nothing is done for newcomers before
  int pause_ = 0;            // between two requests for the name
};

}  // namespace fringix::platform
