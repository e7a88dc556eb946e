#include "platform/socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/own_descriptors.h"
#include "platform/posix/wait.h"

namespace fringix::platform {

namespace {

sockaddr_in toNative(Ipv4Endpoint endpoint) noexcept {
  sockaddr_in native{};
  native.sin_family = AF_INET;
  native.sin_port = htons(endpoint.port);
  native.sin_addr.s_addr = htonl(endpoint.address);
  return native;
}

Ipv4Endpoint fromNative(const sockaddr_in& native) noexcept { return {ntohl(native.sin_addr.s_addr), ntohs(native.sin_port)}; }

const sockaddr* generic(const sockaddr_in& native) noexcept { return reinterpret_cast<const sockaddr*>(&native); }
sockaddr* generic(sockaddr_in& native) noexcept { return reinterpret_cast<sockaddr*>(&native); }

template <class Value>
bool setOption(int handle, int level, int name, const Value& value) noexcept {
  return setsockopt(handle, level, name, &value, sizeof value) == 0;
}

template <class Call>
auto retried(Call&& call) noexcept {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// What an interrupted connect() has become: it goes on by itself and must not be called again.
bool connectFinished(int handle) noexcept {
  if (waitFor(handle, POLLOUT, waitForever) != Readiness::ready) return false;
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(handle, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

}  // namespace

SocketLibrary::SocketLibrary() noexcept = default;
SocketLibrary::~SocketLibrary() = default;

std::uint32_t parseIpv4(const char* text) noexcept { return ntohl(inet_addr(text)); }

Socket Socket::openStream() noexcept { return Socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)); }
Socket Socket::openDatagram() noexcept { return Socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP)); }

Socket::Socket(Handle handle) noexcept : handle_(handle) { own(handle); }

void Socket::close() noexcept {
  if (valid()) closeOwn(release());
}

bool Socket::connect(Ipv4Endpoint peer) noexcept {
  const sockaddr_in address = toNative(peer);
  if (::connect(handle_, generic(address), sizeof address) == 0) return true;
  return errno == EINTR && connectFinished(handle_);
}

bool Socket::connectInProgress() noexcept { return errno == EINPROGRESS; }

bool Socket::bind(Ipv4Endpoint local) noexcept {
  const sockaddr_in address = toNative(local);
  return ::bind(handle_, generic(address), sizeof address) == 0;
}

bool Socket::listen(int backlog) noexcept { return ::listen(handle_, backlog) == 0; }

bool Socket::setNonBlocking(bool on) noexcept {
  int value = on ? 1 : 0;
  return ioctl(handle_, FIONBIO, &value) == 0;
}

bool Socket::setNoDelay(bool on) noexcept { return setOption(handle_, IPPROTO_TCP, TCP_NODELAY, int{on}); }
bool Socket::setKeepAlive(const KeepAlive& times) noexcept {
  return setOption(handle_, SOL_SOCKET, SO_KEEPALIVE, 1) &&
         setOption(handle_, IPPROTO_TCP, TCP_KEEPIDLE, static_cast<int>(times.silence.count())) &&
         setOption(handle_, IPPROTO_TCP, TCP_KEEPINTVL, static_cast<int>(times.interval.count())) &&
         setOption(handle_, IPPROTO_TCP, TCP_KEEPCNT, times.probes);
}
bool Socket::setBroadcast(bool on) noexcept { return setOption(handle_, SOL_SOCKET, SO_BROADCAST, int{on}); }
bool Socket::setReceiveBuffer(int bytes) noexcept {
  // A process with the right to may go past the system's limit.
  return setOption(handle_, SOL_SOCKET, SO_RCVBUFFORCE, bytes) || setOption(handle_, SOL_SOCKET, SO_RCVBUF, bytes);
}
bool Socket::setReuseAddress(bool on) noexcept { return setOption(handle_, SOL_SOCKET, SO_REUSEADDR, int{on}); }
bool Socket::setSoleListener() noexcept { return setReuseAddress(true); }
bool Socket::setResetOnClose() noexcept { return setOption(handle_, SOL_SOCKET, SO_LINGER, linger{1, 0}); }
bool Socket::shutdown() noexcept { return ::shutdown(handle_, SHUT_RDWR) == 0; }

Socket Socket::accept(Ipv4Endpoint* peer) noexcept {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  Socket accepted(retried([&] { return accept4(handle_, generic(address), &size, SOCK_CLOEXEC); }));
  if (peer != nullptr && accepted.valid()) *peer = fromNative(address);
  return accepted;
}

Ipv4Endpoint Socket::localEndpoint() const noexcept {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  return getsockname(handle_, generic(address), &size) == 0 ? fromNative(address) : Ipv4Endpoint{};
}

std::ptrdiff_t Socket::send(const void* data, std::size_t size) noexcept {
  return retried([&] { return ::send(handle_, data, size, MSG_NOSIGNAL); });
}

bool Socket::sendHadNoRoom() noexcept { return errno == EAGAIN; }

bool Socket::hasUnconfirmed() const noexcept {
  int bytes = 0;
  return ioctl(handle_, SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

std::ptrdiff_t Socket::receive(void* buffer, std::size_t size) noexcept {
  return retried([&] { return ::recv(handle_, buffer, size, 0); });
}

std::ptrdiff_t Socket::sendTo(const void* data, std::size_t size, Ipv4Endpoint receiver) noexcept {
  const sockaddr_in address = toNative(receiver);
  return retried([&] { return ::sendto(handle_, data, size, MSG_NOSIGNAL, generic(address), sizeof address); });
}

std::ptrdiff_t Socket::receiveFrom(void* buffer, std::size_t size, Ipv4Endpoint* sender) noexcept {
  sockaddr_in address{};
  socklen_t addressSize = sizeof address;
  const auto received = retried([&] { return ::recvfrom(handle_, buffer, size, 0, generic(address), &addressSize); });
  if (received >= 0) *sender = fromNative(address);
  return received;
}

Readiness Socket::waitReadable(std::chrono::milliseconds limit) const noexcept { return waitFor(handle_, POLLIN, limit); }
Readiness Socket::waitWritable(std::chrono::milliseconds limit) const noexcept { return waitFor(handle_, POLLOUT, limit); }

}  // namespace fringix::platform
