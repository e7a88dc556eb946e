#include "platform/socket.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "fuzz/platform/network.h"

namespace fringix::fuzz {

Network& network() {
  static Network& network = *new Network;
  return network;
}

}  // namespace fringix::fuzz

namespace fringix::platform {

namespace {

using fuzz::Connection;
using fuzz::End;
using fuzz::network;

constexpr Socket::Handle stream = 1000;
constexpr Socket::Handle datagram = 1001;
constexpr Socket::Handle other = 1002;  // and above

Connection& connectionOf(Socket::Handle socket) {
  return socket < other ? network().connection : network().others[static_cast<std::size_t>(socket - other)];
}

Socket opened(Socket::Handle handle) noexcept {
  ++network().open;
  return Socket(handle);
}

Readiness silence(std::chrono::milliseconds limit) noexcept {
  if (limit < std::chrono::milliseconds::zero()) network().waitedForEver = true;
  return limit < std::chrono::milliseconds::zero() ? Readiness::failed : Readiness::timedOut;
}

}  // namespace

SocketLibrary::SocketLibrary() noexcept = default;
SocketLibrary::~SocketLibrary() = default;

std::uint32_t parseIpv4(const char* text) noexcept {
  unsigned parts[4];
  char rest = 0;
  if (std::sscanf(text, "%3u.%3u.%3u.%3u%c", &parts[0], &parts[1], &parts[2], &parts[3], &rest) != 4) return 0xFFFFFFFF;
  return parts[0] << 24 | parts[1] << 16 | parts[2] << 8 | parts[3];
}

Socket::Socket(Handle handle) noexcept : handle_(handle) {}

Socket Socket::openStream() noexcept { return opened(stream); }
Socket Socket::openDatagram() noexcept { return opened(datagram); }

void Socket::close() noexcept {
  if (!valid()) return;
  release();
  --network().open;
}

bool Socket::connect(Ipv4Endpoint to) noexcept {
  const std::uint32_t place = to.address - fuzz::firstOther;
  if (place < network().others.size()) handle_ = other + static_cast<Handle>(place);
  return !connectionOf(handle_).refused;
}
bool Socket::connectInProgress() noexcept { return false; }
bool Socket::bind(Ipv4Endpoint) noexcept { return true; }
bool Socket::listen(int) noexcept { return true; }
bool Socket::setNonBlocking(bool) noexcept { return true; }
bool Socket::setNoDelay(bool) noexcept { return true; }
bool Socket::setKeepAlive(const KeepAlive&) noexcept { return true; }
bool Socket::setBroadcast(bool) noexcept { return true; }
bool Socket::setReceiveBuffer(int) noexcept { return true; }
bool Socket::setReuseAddress(bool) noexcept { return true; }
bool Socket::setSoleListener() noexcept { return true; }
bool Socket::setResetOnClose() noexcept { return true; }
bool Socket::shutdown() noexcept { return true; }
Socket Socket::accept(Ipv4Endpoint*) noexcept { return {}; }
Ipv4Endpoint Socket::localEndpoint() const noexcept { return {0x7F000001, 44330}; }

std::ptrdiff_t Socket::send(const void* data, std::size_t size) noexcept {
  Connection& to = connectionOf(handle_);
  const std::size_t taken = std::min(size, to.room);
  if (taken == 0 && size > 0) return -1;
  if (to.room != fuzz::unlimited) to.room -= taken;
  to.sent.append(static_cast<const char*>(data), taken);
  return static_cast<std::ptrdiff_t>(taken);
}

bool Socket::sendHadNoRoom() noexcept { return false; }
bool Socket::hasUnconfirmed() const noexcept { return false; }

std::ptrdiff_t Socket::receive(void* buffer, std::size_t size) noexcept {
  Connection& from = connectionOf(handle_);
  const std::size_t count = std::min({size, from.waiting(), from.atOnce});
  if (count == 0) return from.end == End::closed ? 0 : -1;
  std::memcpy(buffer, from.arriving.data() + from.taken, count);
  from.taken += count;
  return static_cast<std::ptrdiff_t>(count);
}

std::ptrdiff_t Socket::sendTo(const void*, std::size_t size, Ipv4Endpoint) noexcept { return static_cast<std::ptrdiff_t>(size); }

std::ptrdiff_t Socket::receiveFrom(void* buffer, std::size_t size, Ipv4Endpoint* sender) noexcept {
  auto& waiting = network().datagrams;
  if (waiting.empty()) return -1;
  const fuzz::Datagram next = std::move(waiting.front());
  waiting.pop_front();
  const std::size_t count = std::min(size, next.bytes.size());  // one that is larger fills the buffer
  std::memcpy(buffer, next.bytes.data(), count);
  *sender = {next.sender, 44332};
  return static_cast<std::ptrdiff_t>(count);
}

Readiness Socket::waitReadable(std::chrono::milliseconds limit) const noexcept {
  if (handle_ == datagram) return network().datagrams.empty() ? silence(limit) : Readiness::ready;
  const Connection& from = connectionOf(handle_);
  return from.waiting() > 0 || from.end != End::silence ? Readiness::ready : silence(limit);
}

Readiness Socket::waitWritable(std::chrono::milliseconds) const noexcept { return Readiness::ready; }

}  // namespace fringix::platform
