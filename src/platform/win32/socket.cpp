#include "platform/socket.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <mstcpip.h>  // wants the types of those above

#include <algorithm>
#include <climits>

namespace fringix::platform {

namespace {

static_assert(Socket::invalidHandle == INVALID_SOCKET);

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
bool setOption(SOCKET handle, int level, int name, const Value& value) noexcept {
  return setsockopt(handle, level, name, reinterpret_cast<const char*>(&value), sizeof value) == 0;
}

int boundedSize(std::size_t size) noexcept { return static_cast<int>(std::min<std::size_t>(size, INT_MAX)); }

// select() with one socket; a negative limit waits without end.
Readiness selectOne(SOCKET handle, bool forReading, std::chrono::milliseconds limit) noexcept {
  if (handle == INVALID_SOCKET) return Readiness::failed;
  fd_set set;
  FD_ZERO(&set);
  FD_SET(handle, &set);
  fd_set failures = set;  // a refused non-blocking connect shows here only
  timeval time{static_cast<long>(std::min<std::int64_t>(limit.count() / 1000, LONG_MAX)), static_cast<long>(limit.count() % 1000 * 1000)};
  timeval* bound = limit < limit.zero() ? nullptr : &time;
  const int ready = select(0, forReading ? &set : nullptr, forReading ? nullptr : &set, forReading ? nullptr : &failures, bound);
  if (ready < 0) return Readiness::failed;
  if (ready == 0) return Readiness::timedOut;
  return FD_ISSET(handle, &set) ? Readiness::ready : Readiness::failed;
}

}  // namespace

SocketLibrary::SocketLibrary() noexcept {
  WSADATA data;
  const WORD version = MAKEWORD(2, 0);
  usable_ = WSAStartup(version, &data) == 0 && data.wVersion == version;
}

SocketLibrary::~SocketLibrary() { WSACleanup(); }

std::uint32_t parseIpv4(const char* text) noexcept { return ntohl(inet_addr(text)); }

Socket Socket::openStream() noexcept {
  return Socket(WSASocketW(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}
Socket Socket::openDatagram() noexcept {
  return Socket(WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

Socket::Socket(Handle handle) noexcept : handle_(handle) {}

void Socket::close() noexcept {
  if (valid()) closesocket(release());
}

bool Socket::connect(Ipv4Endpoint peer) noexcept {
  const sockaddr_in address = toNative(peer);
  return ::connect(handle_, generic(address), sizeof address) == 0;
}

bool Socket::connectInProgress() noexcept { return WSAGetLastError() == WSAEWOULDBLOCK; }

bool Socket::bind(Ipv4Endpoint local) noexcept {
  const sockaddr_in address = toNative(local);
  return ::bind(handle_, generic(address), sizeof address) == 0;
}

bool Socket::listen(int backlog) noexcept { return ::listen(handle_, backlog) == 0; }

bool Socket::setNonBlocking(bool on) noexcept {
  u_long value = on ? 1 : 0;
  return ioctlsocket(handle_, static_cast<long>(FIONBIO), &value) == 0;
}

bool Socket::setNoDelay(bool on) noexcept { return setOption(handle_, IPPROTO_TCP, TCP_NODELAY, int{on}); }
bool Socket::setKeepAlive(const KeepAlive& times) noexcept {
  using std::chrono::milliseconds;
  tcp_keepalive values{1, static_cast<ULONG>(milliseconds(times.silence).count()),
                       static_cast<ULONG>(milliseconds(times.interval).count())};
  DWORD size = 0;
  return setOption(handle_, SOL_SOCKET, SO_KEEPALIVE, int{1}) &&
         WSAIoctl(handle_, SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0, &size, nullptr, nullptr) == 0;
}
bool Socket::setBroadcast(bool on) noexcept { return setOption(handle_, SOL_SOCKET, SO_BROADCAST, int{on}); }
bool Socket::setReceiveBuffer(int bytes) noexcept { return setOption(handle_, SOL_SOCKET, SO_RCVBUF, bytes); }
bool Socket::setReuseAddress(bool on) noexcept { return setOption(handle_, SOL_SOCKET, SO_REUSEADDR, int{on}); }
bool Socket::setSoleListener() noexcept { return setOption(handle_, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, int{1}); }
bool Socket::setResetOnClose() noexcept { return setOption(handle_, SOL_SOCKET, SO_LINGER, linger{1, 0}); }
bool Socket::shutdown() noexcept { return ::shutdown(handle_, SD_BOTH) == 0; }

Socket Socket::accept(Ipv4Endpoint* peer) noexcept {
  sockaddr_in address{};
  int size = sizeof address;
  Socket accepted(::accept(handle_, generic(address), &size));
  if (peer != nullptr && accepted.valid()) *peer = fromNative(address);
  return accepted;
}

Ipv4Endpoint Socket::localEndpoint() const noexcept {
  sockaddr_in address{};
  int size = sizeof address;
  return getsockname(handle_, generic(address), &size) == 0 ? fromNative(address) : Ipv4Endpoint{};
}

std::ptrdiff_t Socket::send(const void* data, std::size_t size) noexcept {
  return ::send(handle_, static_cast<const char*>(data), boundedSize(size), 0);
}

bool Socket::sendHadNoRoom() noexcept { return WSAGetLastError() == WSAEWOULDBLOCK; }

// The system gives a connection up by itself when it has repeated something for some 20 seconds in vain.
bool Socket::hasUnconfirmed() const noexcept { return false; }

std::ptrdiff_t Socket::receive(void* buffer, std::size_t size) noexcept {
  return ::recv(handle_, static_cast<char*>(buffer), boundedSize(size), 0);
}

std::ptrdiff_t Socket::sendTo(const void* data, std::size_t size, Ipv4Endpoint receiver) noexcept {
  const sockaddr_in address = toNative(receiver);
  return ::sendto(handle_, static_cast<const char*>(data), boundedSize(size), 0, generic(address), sizeof address);
}

std::ptrdiff_t Socket::receiveFrom(void* buffer, std::size_t size, Ipv4Endpoint* sender) noexcept {
  sockaddr_in address{};
  int addressSize = sizeof address;
  const int received = ::recvfrom(handle_, static_cast<char*>(buffer), boundedSize(size), 0, generic(address), &addressSize);
  if (received >= 0) *sender = fromNative(address);
  return received;
}

Readiness Socket::waitReadable(std::chrono::milliseconds limit) const noexcept { return selectOne(handle_, true, limit); }
Readiness Socket::waitWritable(std::chrono::milliseconds limit) const noexcept { return selectOne(handle_, false, limit); }

}  // namespace fringix::platform
