#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "diagnosis/datagrams.h"

namespace fringix::tool::diagnosis {
namespace {

int openSocket() { return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }

sockaddr_in endpoint(std::uint32_t address, std::uint16_t port) {
  sockaddr_in endpoint{};
  endpoint.sin_family = AF_INET;
  endpoint.sin_port = htons(port);
  endpoint.sin_addr.s_addr = htonl(address);
  return endpoint;
}

const sockaddr* generic(const sockaddr_in& endpoint) { return reinterpret_cast<const sockaddr*>(&endpoint); }

}  // namespace

DatagramSocket::DatagramSocket(std::uint32_t address) : handle_(openSocket()) {
  const int socket = static_cast<int>(handle_);
  const int on = 1;
  const sockaddr_in local = endpoint(address, 0);
  if (setsockopt(socket, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0 && bind(socket, generic(local), sizeof local) == 0) return;
  if (socket >= 0) close(socket);
  handle_ = -1;
}

DatagramSocket::~DatagramSocket() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

bool DatagramSocket::send(std::string_view text, std::uint32_t address, std::uint16_t port) {
  const sockaddr_in peer = endpoint(address, port);
  return sendto(static_cast<int>(handle_), text.data(), text.size(), MSG_NOSIGNAL, generic(peer), sizeof peer) >= 0;
}

bool DatagramSocket::receive(std::string& text, std::uint32_t& sender) {
  sockaddr_in peer{};
  socklen_t peerSize = sizeof peer;
  char buffer[512];
  const ssize_t size = recvfrom(static_cast<int>(handle_), buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&peer), &peerSize);
  if (size < 0) return false;
  text.assign(buffer, static_cast<std::size_t>(size));
  sender = ntohl(peer.sin_addr.s_addr);
  return true;
}

std::optional<std::uint32_t> sourceTowards(std::uint32_t address) {
  const int socket = openSocket();
  const sockaddr_in peer = endpoint(address, 9);  // nothing is sent there
  sockaddr_in local{};
  socklen_t size = sizeof local;
  const bool known =
      connect(socket, generic(peer), sizeof peer) == 0 && getsockname(socket, reinterpret_cast<sockaddr*>(&local), &size) == 0;
  if (socket >= 0) close(socket);
  return known ? std::optional(ntohl(local.sin_addr.s_addr)) : std::nullopt;
}

std::string whyNotBound(std::uint16_t port) {
  const int socket = openSocket();
  const sockaddr_in local = endpoint(INADDR_ANY, port);
  const int error = socket >= 0 && bind(socket, generic(local), sizeof local) == 0 ? 0 : errno;
  if (socket >= 0) close(socket);
  return error == 0 ? "" : std::system_category().message(error);
}

}  // namespace fringix::tool::diagnosis
