#include "minimal_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "head.h"

namespace fringix::bench {

namespace {

constexpr std::size_t chunkSize = 8096;
constexpr int receiveLimitMilliseconds = 30'000;

void connectTo(int socket, const char* address) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
  sockaddr_in peer{};
  peer.sin_family = AF_INET;
  peer.sin_port = htons(commandPort);
  peer.sin_addr.s_addr = inet_addr(address);
  if (connect(socket, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) throwSystemError("minimal client: connect");
}

}  // namespace

MinimalClient::MinimalClient(const char* address) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "minimal client: socket") {
  connectTo(socket_.get(), address);
  receiveInteger();  // the greeting
  block(protocolVersion);
}

MinimalClient::~MinimalClient() = default;

void MinimalClient::command(std::string_view name) {
  std::array<char, 64> message;
  const int length =
      std::snprintf(message.data(), message.size(), "%6d%.*s", static_cast<int>(name.size()), static_cast<int>(name.size()), name.data());
  bytes(message.data(), static_cast<std::size_t>(length));
}

void MinimalClient::bytes(const void* data, std::size_t size) {
  const auto* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t sent = send(socket_.get(), next, size, MSG_NOSIGNAL);
    if (sent < 0) throwSystemError("minimal client: send");
    next += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

void MinimalClient::receive(void* buffer, std::size_t size) {
  std::array<char, chunkSize> chunk;
  auto* next = static_cast<char*>(buffer);
  while (size > 0) {
    pollfd entry{socket_.get(), POLLIN, 0};
    if (poll(&entry, 1, receiveLimitMilliseconds) != 1) throwSystemError("minimal client: poll");
    const ssize_t received = recv(socket_.get(), chunk.data(), std::min(size, chunk.size()), 0);
    if (received <= 0) throwSystemError("minimal client: recv");
    std::memcpy(next, chunk.data(), static_cast<std::size_t>(received));
    next += received;
    size -= static_cast<std::size_t>(received);
  }
}

std::int32_t MinimalClient::receiveInteger() {
  std::uint32_t wire = 0;
  receive(&wire, sizeof wire);
  return static_cast<std::int32_t>(le32toh(wire));
}

void MinimalClient::requireGoodStatus() {
  if (receiveInteger() != 0) throw std::runtime_error("minimal client: the head reports a failure");
}

std::uint8_t* MinimalClient::scratchFrame(std::size_t size) {
  if (scratchFrame_.empty()) scratchFrame_.resize(size);
  return scratchFrame_.data();
}

}  // namespace fringix::bench
