#include "net/command_channel.h"

#include <new>

#include "platform/clock.h"

namespace fringix {

namespace {

constexpr std::chrono::seconds longestConfirmation{10};

}  // namespace

int CommandChannel::Connect(const std::string& address) {
  socket_.reset();
  peerAddress_.clear();
  socket_.reset(new (std::nothrow) myTcpSocket);
  if (!socket_) return -1;
  socket_->Create();  // unchecked: without a socket Connect fails
  peerAddress_ = address;
  *lastSendTime_ = 0;
  lastSend_.reset();
  socket_->enableKeepAlive();
  if (socket_->Connect(address) != 0) return -1;
  return socket_->setNonBlocking(true);  // from here on whoever waits does so with a limit
}

int CommandChannel::SendString(std::string_view text) {
  if (!socket_) return -1;
  const bool lost = isLost();
  *lastSendTime_ = platform::secondsSinceEpoch();
  lastSend_ = Clock::now();
  return lost ? -1 : socket_->SendString(text);
}

// No probes are sent while something waits for its confirmation, which the system repeats for a quarter of an hour.
bool CommandChannel::isLost() const noexcept {
  return lastSend_ && Clock::now() - *lastSend_ > longestConfirmation && socket_->hasUnconfirmed();
}

}  // namespace fringix
