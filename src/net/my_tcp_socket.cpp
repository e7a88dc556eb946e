#include "net/my_tcp_socket.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "net/little_endian.h"

namespace fringix {

namespace {

constexpr int failed = -1;
constexpr std::size_t lengthFieldSize = 6;
constexpr std::size_t longestText = 999999;  // what the length field can hold
constexpr std::size_t usualMessage = 1024;
constexpr std::size_t chunkSize = 8096;
constexpr std::chrono::milliseconds roomLook{1000};

using Clock = std::chrono::steady_clock;

int toResult(bool ok) noexcept { return ok ? 0 : failed; }

// A text for which there is no memory cannot be read, and the next answer would be taken out of its middle.
bool hasRoom(std::string& text, std::size_t length) noexcept {
  try {
    text.resize(length);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

int myTcpSocket::Create() {
  port_ = commandPort;
  nonBlocking_ = false;
  socket_ = platform::Socket::openStream();
  if (!socket_.valid()) return failed;
  localAddress_ = {0, commandPort};
  socket_.setNoDelay(true);
  return 0;
}

void myTcpSocket::enableKeepAlive() noexcept {
  if (valid()) socket_.setKeepAlive(keepAlive);
}

int myTcpSocket::Connect(const std::string& address) {
  if (!valid()) return failed;
  return toResult(socket_.connect({platform::parseIpv4(address.c_str()), port_}));
}

int myTcpSocket::setNonBlocking(bool on) {
  if (!socket_.setNonBlocking(on)) return failed;
  nonBlocking_ = on;
  return 0;
}

int myTcpSocket::ConnectWithTimeout(const std::string& address, std::uint32_t seconds) {
  if (!valid()) return failed;
  const bool wasNonBlocking = nonBlocking_;
  if (!wasNonBlocking && setNonBlocking(true) != 0) return failed;
  if (!socket_.connect({platform::parseIpv4(address.c_str()), port_}) && !platform::Socket::connectInProgress()) return failed;
  if (socket_.waitWritable(std::chrono::seconds(seconds)) != platform::Readiness::ready) return failed;
  return wasNonBlocking ? 0 : setNonBlocking(false);
}

// Without memory for a text that is longer than usual nothing is sent.
int myTcpSocket::SendString(std::string_view text) {
  if (text.size() > longestText) return failed;
  // Length and text leave in one send: two would cost the head a second wake-up.
  const std::size_t size = lengthFieldSize + text.size();
  std::array<char, usualMessage> usual;
  const std::unique_ptr<char[]> large(size < usual.size() ? nullptr : new (std::nothrow) char[size + 1]);
  char* const message = size < usual.size() ? usual.data() : large.get();
  if (message == nullptr) return failed;
  std::snprintf(message, lengthFieldSize + 1, "%6d", static_cast<int>(text.size()));
  std::copy(text.begin(), text.end(), message + lengthFieldSize);
  return SendBytes(message, size);
}

// What there is room for, or gets room within the longest pause. More than 0, or the send has failed.
std::ptrdiff_t myTcpSocket::sendSome(const void* data, std::size_t count) {
  std::ptrdiff_t sent = socket_.send(data, count);
  if (sent >= 0 || !platform::Socket::sendHadNoRoom()) return sent;
  const auto deadline = Clock::now() + sendPause_;
  do {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    // The system tells of room only when there is plenty, which a slow peer may take long to make: so there is a look now and then.
    if (socket_.waitWritable(std::clamp(rest, std::chrono::milliseconds::zero(), roomLook)) == platform::Readiness::failed) return failed;
    sent = socket_.send(data, count);
  } while (sent < 0 && platform::Socket::sendHadNoRoom() && Clock::now() < deadline);
  return sent;
}

int myTcpSocket::SendBytes(const void* buffer, std::size_t count) {
  if (!valid()) return failed;
  const auto* next = static_cast<const std::byte*>(buffer);
  while (count > 0) {
    const std::ptrdiff_t sent = sendSome(next, count);
    if (sent < 0) return failed;
    next += sent;
    count -= static_cast<std::size_t>(sent);
  }
  return 0;
}

int myTcpSocket::WaitReadable(std::uint32_t seconds) const {
  if (!valid()) return failed;
  const platform::Readiness readiness = socket_.waitReadable(std::chrono::seconds(seconds));
  if (readiness == platform::Readiness::failed) return failed;
  return readiness == platform::Readiness::ready ? 1 : 0;
}

// One receive, preceded by the wait that the receive timeout asks for. More than 0, or the receive has failed.
std::ptrdiff_t myTcpSocket::receiveSome(void* buffer, std::size_t count) {
  const std::chrono::milliseconds limit = receiveTimeout_ != 0 ? std::chrono::seconds(receiveTimeout_) : platform::waitForever;
  if (socket_.waitReadable(limit) != platform::Readiness::ready) return failed;
  return socket_.receive(buffer, count);
}

int myTcpSocket::ReceiveBytes(void* buffer, std::size_t count) {
  if (!valid()) return failed;
  // Kept on purpose: receiving nothing fails, because a receive of zero bytes looks like a closed connection.
  if (count == 0) return failed;
  std::array<std::byte, chunkSize> chunk;
  auto* next = static_cast<std::byte*>(buffer);
  while (count > 0) {
    const std::ptrdiff_t received = receiveSome(chunk.data(), std::min(count, chunk.size()));
    if (received <= 0) return failed;
    std::memcpy(next, chunk.data(), static_cast<std::size_t>(received));
    next += received;
    count -= static_cast<std::size_t>(received);
  }
  return 0;
}

int myTcpSocket::ReceiveInt(std::int32_t* out) {
  std::array<unsigned char, 4> bytes;
  if (ReceiveBytes(bytes.data(), bytes.size()) != 0) return failed;
  *out = readLittleEndian(bytes.data());
  return 0;
}

int myTcpSocket::ReceiveString(std::string* out) {
  std::array<char, lengthFieldSize + 1> field{};
  if (ReceiveBytes(field.data(), lengthFieldSize) != 0) return failed;
  const int length = std::atoi(field.data());
  if (length < 0) return failed;
  if (!hasRoom(*out, static_cast<std::size_t>(length))) return failed;
  return ReceiveBytes(out->data(), out->size());  // fails for an empty string; heads never send one
}

}  // namespace fringix
