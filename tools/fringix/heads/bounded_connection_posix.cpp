#include <arpa/inet.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "heads/bounded_connection.h"

namespace fringix::tool {

BoundedConnection::BoundedConnection() = default;

BoundedConnection::~BoundedConnection() {
  if (socket_ >= 0) close(static_cast<int>(socket_));
}

BoundedConnection::Outcome BoundedConnection::fail(int error) {
  error_ = error;
  switch (error) {
    case ECONNREFUSED:
      return Outcome::refused;
    case ENETUNREACH:
    case ENETDOWN:
    case EHOSTUNREACH:
    case EHOSTDOWN:
      return Outcome::unreachable;
    case ETIMEDOUT:
      return Outcome::timedOut;
    case ECONNRESET:
    case EPIPE:  // reset after it was ended
      return Outcome::reset;
    default:
      return Outcome::failed;
  }
}

BoundedConnection::Outcome BoundedConnection::waitUntil(Clock::time_point until, bool forRoomToSend) {
  pollfd entry{static_cast<int>(socket_), static_cast<short>(forRoomToSend ? POLLOUT : POLLIN), 0};
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    const int ready = poll(&entry, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready > 0) return Outcome::done;
    if (ready == 0) return fail(ETIMEDOUT);
    if (errno != EINTR) return fail(errno);
  }
}

BoundedConnection::Outcome BoundedConnection::connect(const std::string& address, std::uint16_t port, Clock::time_point until) {
  socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket_ < 0) return fail(errno);
  sockaddr_in peer{};
  peer.sin_family = AF_INET;
  peer.sin_port = htons(port);
  peer.sin_addr.s_addr = inet_addr(address.c_str());
  if (::connect(static_cast<int>(socket_), reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == 0) return Outcome::done;
  if (errno != EINPROGRESS && errno != EINTR) return fail(errno);
  if (const Outcome waited = waitUntil(until, true); waited != Outcome::done) return waited;
  int error = 0;
  socklen_t size = sizeof error;
  if (getsockopt(static_cast<int>(socket_), SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
  return error == 0 ? Outcome::done : fail(error);
}

BoundedConnection::Outcome BoundedConnection::receive(void* buffer, std::size_t& size, Clock::time_point until) {
  if (const Outcome waited = waitUntil(until, false); waited != Outcome::done) return waited;
  const ssize_t received = recv(static_cast<int>(socket_), buffer, size, 0);
  if (received < 0) return fail(errno);
  size = static_cast<std::size_t>(received);
  return Outcome::done;
}

BoundedConnection::Outcome BoundedConnection::send(const void* data, std::size_t size, Clock::time_point until) {
  for (const auto* next = static_cast<const char*>(data); size > 0;) {
    if (const Outcome waited = waitUntil(until, true); waited != Outcome::done) return waited;
    const ssize_t sent = ::send(static_cast<int>(socket_), next, size, MSG_NOSIGNAL);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) return fail(errno);
    if (sent < 0) continue;
    next += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return Outcome::done;
}

// Older systems fill the front of it only; what they do not know stays 0.
std::optional<Traffic> BoundedConnection::traffic() const {
  tcp_info info{};
  socklen_t size = sizeof info;
  if (getsockopt(static_cast<int>(socket_), IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return {};
  return Traffic{info.tcpi_data_segs_out, info.tcpi_data_segs_in, info.tcpi_total_retrans, info.tcpi_rcv_ooopack};
}

std::string BoundedConnection::reason() const { return std::system_category().message(error_); }

}  // namespace fringix::tool
