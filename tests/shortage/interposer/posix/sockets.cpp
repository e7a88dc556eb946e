// Sockets, and the wait for them.
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstddef>

#include "interposer/posix/real.h"

using namespace fringix::shortage;

namespace {

// Datagrams come and go whole.
bool isStream(int socket) noexcept {
  int type = 0;
  socklen_t size = sizeof type;
  return getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

// Moves `size` bytes, one, or none.
template <class Move>
ssize_t moved(Function function, int socket, std::size_t size, Move&& move) noexcept {
  const int before = errno;
  const int failure = strike(function, isStream(socket) && size > 1);
  if (failure == nothing) errno = before;
  if (failure == nothing) return move(size);
  if (failure == shortCount) return move(1);
  if (failure == endOfFile) return 0;
  return failed(failure, ssize_t{-1});
}

// Waits for the silence that ends a search.
constexpr int longestSilence = 300;  // milliseconds
constexpr int shortestSilence = 100;

int inAHurry(int limit) noexcept { return hurries() && limit >= shortestSilence && limit <= longestSilence ? limit / 10 : limit; }

}  // namespace

FRINGIX_INTERPOSED int socket(int domain, int type, int protocol) noexcept {
  static const auto real = next<decltype(socket)>("socket");
  if (const int failure = strike(socketCall); failure != nothing) return failed(failure, -1);
  return real(domain, type, protocol);
}

// One that is interrupted goes on by itself.
FRINGIX_INTERPOSED int connect(int socket, const sockaddr* address, socklen_t size) {
  static const auto real = next<decltype(connect)>("connect");
  const int failure = strike(connectCall);
  if (failure != nothing && failure != EINTR) return failed(failure, -1);
  const int result = real(socket, address, size);
  return failure == EINTR && result == 0 ? failed(EINTR, -1) : result;
}

FRINGIX_INTERPOSED int bind(int socket, const sockaddr* address, socklen_t size) noexcept {
  static const auto real = next<decltype(bind)>("bind");
  if (const int failure = strike(bindCall); failure != nothing) return failed(failure, -1);
  return real(socket, address, size);
}

FRINGIX_INTERPOSED int listen(int socket, int backlog) noexcept {
  static const auto real = next<decltype(listen)>("listen");
  if (const int failure = strike(bindCall); failure != nothing) return failed(failure, -1);
  return real(socket, backlog);
}

FRINGIX_INTERPOSED int accept4(int socket, sockaddr* address, socklen_t* size, int flags) {
  static const auto real = next<decltype(accept4)>("accept4");
  if (const int failure = strike(acceptCall); failure != nothing) return failed(failure, -1);
  return real(socket, address, size, flags);
}

FRINGIX_INTERPOSED int accept(int socket, sockaddr* address, socklen_t* size) { return accept4(socket, address, size, 0); }

FRINGIX_INTERPOSED int setsockopt(int socket, int level, int name, const void* value, socklen_t size) noexcept {
  static const auto real = next<decltype(setsockopt)>("setsockopt");
  if (const int failure = strike(optionCall); failure != nothing) return failed(failure, -1);
  return real(socket, level, name, value, size);
}

FRINGIX_INTERPOSED ssize_t sendto(int socket, const void* data, std::size_t size, int flags, const sockaddr* peer, socklen_t peerSize) {
  static const auto real = next<decltype(sendto)>("sendto");
  return moved(sendCall, socket, size, [&](std::size_t part) { return real(socket, data, part, flags, peer, peerSize); });
}

FRINGIX_INTERPOSED ssize_t send(int socket, const void* data, std::size_t size, int flags) {
  return sendto(socket, data, size, flags, nullptr, 0);
}

FRINGIX_INTERPOSED ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  static const auto real = next<decltype(sendmsg)>("sendmsg");
  return moved(sendCall, socket, 1, [&](std::size_t) { return real(socket, message, flags); });
}

FRINGIX_INTERPOSED ssize_t recvfrom(int socket, void* buffer, std::size_t size, int flags, sockaddr* peer, socklen_t* peerSize) {
  static const auto real = next<decltype(recvfrom)>("recvfrom");
  return moved(receiveCall, socket, size, [&](std::size_t part) { return real(socket, buffer, part, flags, peer, peerSize); });
}

FRINGIX_INTERPOSED ssize_t recv(int socket, void* buffer, std::size_t size, int flags) {
  return recvfrom(socket, buffer, size, flags, nullptr, nullptr);
}

FRINGIX_INTERPOSED ssize_t recvmsg(int socket, msghdr* message, int flags) {
  static const auto real = next<decltype(recvmsg)>("recvmsg");
  return moved(receiveCall, socket, 1, [&](std::size_t) { return real(socket, message, flags); });
}

FRINGIX_INTERPOSED int poll(pollfd* entries, nfds_t count, int limit) {
  static const auto real = next<decltype(poll)>("poll");
  if (const int failure = strike(pollCall); failure != nothing) return failed(failure, -1);
  return real(entries, count, inAHurry(limit));
}

// What the fortified headers make of these.
FRINGIX_INTERPOSED ssize_t __recv_chk(int socket, void* buffer, std::size_t size, std::size_t, int flags) {
  return recv(socket, buffer, size, flags);
}

FRINGIX_INTERPOSED ssize_t __recvfrom_chk(int socket, void* buffer, std::size_t size, std::size_t, int flags, sockaddr* peer,
                                          socklen_t* peerSize) {
  return recvfrom(socket, buffer, size, flags, peer, peerSize);
}

FRINGIX_INTERPOSED int __poll_chk(pollfd* entries, nfds_t count, int limit, std::size_t) { return poll(entries, count, limit); }
