#include <winsock2.h>

#include <mstcpip.h>

#include <algorithm>
#include <system_error>

#include "heads/bounded_connection.h"
#include "heads/winsock_win32.h"

namespace fringix::tool {

namespace {

// Kept for the life of the process: sockets of other objects may be under way.
const Winsock& winsock() {
  static const Winsock instance;
  return instance;
}

timeval toTimeval(std::chrono::microseconds time) {
  const auto count = std::max<std::int64_t>(time.count(), 0);
  return {static_cast<long>(count / 1000000), static_cast<long>(count % 1000000)};
}

}  // namespace

BoundedConnection::BoundedConnection() : error_(winsock().error()) {}

BoundedConnection::~BoundedConnection() {
  if (socket_ >= 0) closesocket(static_cast<SOCKET>(socket_));
}

BoundedConnection::Outcome BoundedConnection::fail(int error) {
  error_ = error;
  switch (error) {
    case WSAECONNREFUSED:
      return Outcome::refused;
    case WSAENETUNREACH:
    case WSAENETDOWN:
    case WSAEHOSTUNREACH:
    case WSAEHOSTDOWN:
      return Outcome::unreachable;
    case WSAETIMEDOUT:
      return Outcome::timedOut;
    case WSAECONNRESET:
    case WSAECONNABORTED:
      return Outcome::reset;
    default:
      return Outcome::failed;
  }
}

// A connect() that failed shows among the exceptions here, and nowhere else.
BoundedConnection::Outcome BoundedConnection::waitUntil(Clock::time_point until, bool forRoomToSend) {
  fd_set wanted{1, {static_cast<SOCKET>(socket_)}};
  fd_set exceptions = wanted;
  timeval left = toTimeval(std::chrono::ceil<std::chrono::microseconds>(until - Clock::now()));
  const int ready = select(0, forRoomToSend ? nullptr : &wanted, forRoomToSend ? &wanted : nullptr, &exceptions, &left);
  if (ready > 0) return Outcome::done;
  return fail(ready == 0 ? WSAETIMEDOUT : WSAGetLastError());
}

BoundedConnection::Outcome BoundedConnection::connect(const std::string& address, std::uint16_t port, Clock::time_point until) {
  if (error_ != 0) return fail(error_);
  const SOCKET handle = socket(AF_INET, SOCK_STREAM, 0);
  if (handle == INVALID_SOCKET) return fail(WSAGetLastError());
  socket_ = static_cast<std::intptr_t>(handle);
  u_long nonBlocking = 1;
  if (ioctlsocket(handle, static_cast<long>(FIONBIO), &nonBlocking) != 0) return fail(WSAGetLastError());
  sockaddr_in peer{};
  peer.sin_family = AF_INET;
  peer.sin_port = htons(port);
  peer.sin_addr.s_addr = inet_addr(address.c_str());
  if (::connect(handle, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == 0) return Outcome::done;
  if (WSAGetLastError() != WSAEWOULDBLOCK) return fail(WSAGetLastError());
  if (const Outcome waited = waitUntil(until, true); waited != Outcome::done) return waited;
  int error = 0;
  int size = sizeof error;
  if (getsockopt(handle, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) != 0) error = WSAGetLastError();
  return error == 0 ? Outcome::done : fail(error);
}

BoundedConnection::Outcome BoundedConnection::receive(void* buffer, std::size_t& size, Clock::time_point until) {
  if (const Outcome waited = waitUntil(until, false); waited != Outcome::done) return waited;
  const int received = recv(static_cast<SOCKET>(socket_), static_cast<char*>(buffer), static_cast<int>(size), 0);
  if (received < 0) return fail(WSAGetLastError());
  size = static_cast<std::size_t>(received);
  return Outcome::done;
}

BoundedConnection::Outcome BoundedConnection::send(const void* data, std::size_t size, Clock::time_point until) {
  for (const auto* next = static_cast<const char*>(data); size > 0;) {
    if (const Outcome waited = waitUntil(until, true); waited != Outcome::done) return waited;
    const int sent = ::send(static_cast<SOCKET>(socket_), next, static_cast<int>(std::min<std::size_t>(size, 1 << 20)), 0);
    if (sent < 0 && WSAGetLastError() != WSAEWOULDBLOCK) return fail(WSAGetLastError());
    if (sent < 0) continue;
    next += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return Outcome::done;
}

// It counts bytes. Before Windows 10 of 2017 it tells nothing.
std::optional<Traffic> BoundedConnection::traffic() const {
  DWORD version = 0;
  TCP_INFO_v0 info{};
  DWORD size = 0;
  if (WSAIoctl(static_cast<SOCKET>(socket_), SIO_TCP_INFO, &version, sizeof version, &info, sizeof info, &size, nullptr, nullptr) != 0)
    return {};
  const auto segments = [&](std::uint64_t bytes) { return (bytes + info.Mss - 1) / std::max<std::uint64_t>(info.Mss, 1); };
  return Traffic{segments(info.BytesOut), segments(info.BytesIn), segments(info.BytesRetrans), segments(info.BytesReordered)};
}

std::string BoundedConnection::reason() const { return std::system_category().message(error_); }

}  // namespace fringix::tool
