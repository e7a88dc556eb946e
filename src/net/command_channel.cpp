#include "net/command_channel.h"

#include <new>

#include "platform/clock.h"

namespace fringix {

int CommandChannel::Connect(const std::string& address) {
  socket_.reset();
  peerAddress_.clear();
  socket_.reset(new (std::nothrow) myTcpSocket);
  if (!socket_) return -1;
  socket_->Create();  // unchecked: without a socket Connect fails
  peerAddress_ = address;
  *lastSendTime_ = 0;
  socket_->enableKeepAlive();
  return socket_->Connect(address);
}

int CommandChannel::SendString(std::string_view text) {
  if (!socket_) return -1;
  *lastSendTime_ = platform::secondsSinceEpoch();
  return socket_->SendString(text);
}

}  // namespace fringix
