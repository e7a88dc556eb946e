#include <winsock2.h>

#include <system_error>

#include "diagnosis/datagrams.h"
#include "heads/winsock_win32.h"

namespace fringix::tool::diagnosis {
namespace {

// Kept for the life of the process.
SOCKET openSocket() {
  static const Winsock winsock;
  return winsock.error() == 0 ? socket(AF_INET, SOCK_DGRAM, 0) : INVALID_SOCKET;
}

sockaddr_in endpoint(std::uint32_t address, std::uint16_t port) {
  sockaddr_in endpoint{};
  endpoint.sin_family = AF_INET;
  endpoint.sin_port = htons(port);
  endpoint.sin_addr.s_addr = htonl(address);
  return endpoint;
}

const sockaddr* generic(const sockaddr_in& endpoint) { return reinterpret_cast<const sockaddr*>(&endpoint); }

bool prepare(SOCKET socket, std::uint32_t address) {
  const BOOL on = TRUE;
  u_long nonBlocking = 1;
  const sockaddr_in local = endpoint(address, 0);
  return setsockopt(socket, SOL_SOCKET, SO_BROADCAST, reinterpret_cast<const char*>(&on), sizeof on) == 0 &&
         ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking) == 0 && bind(socket, generic(local), sizeof local) == 0;
}

}  // namespace

DatagramSocket::DatagramSocket(std::uint32_t address) : handle_(static_cast<std::intptr_t>(openSocket())) {
  const auto socket = static_cast<SOCKET>(handle_);
  if (socket == INVALID_SOCKET || prepare(socket, address)) return;
  closesocket(socket);
  handle_ = -1;
}

DatagramSocket::~DatagramSocket() {
  if (handle_ >= 0) closesocket(static_cast<SOCKET>(handle_));
}

bool DatagramSocket::send(std::string_view text, std::uint32_t address, std::uint16_t port) {
  const sockaddr_in peer = endpoint(address, port);
  return sendto(static_cast<SOCKET>(handle_), text.data(), static_cast<int>(text.size()), 0, generic(peer), sizeof peer) >= 0;
}

bool DatagramSocket::receive(std::string& text, std::uint32_t& sender) {
  sockaddr_in peer{};
  int peerSize = sizeof peer;
  char buffer[512];
  const int size = recvfrom(static_cast<SOCKET>(handle_), buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&peer), &peerSize);
  if (size < 0) return false;
  text.assign(buffer, static_cast<std::size_t>(size));
  sender = ntohl(peer.sin_addr.s_addr);
  return true;
}

std::optional<std::uint32_t> sourceTowards(std::uint32_t address) {
  const SOCKET socket = openSocket();
  const sockaddr_in peer = endpoint(address, 9);  // nothing is sent there
  sockaddr_in local{};
  int size = sizeof local;
  const bool known =
      connect(socket, generic(peer), sizeof peer) == 0 && getsockname(socket, reinterpret_cast<sockaddr*>(&local), &size) == 0;
  if (socket != INVALID_SOCKET) closesocket(socket);
  return known ? std::optional(static_cast<std::uint32_t>(ntohl(local.sin_addr.s_addr))) : std::nullopt;
}

std::string whyNotBound(std::uint16_t port) {
  const SOCKET socket = openSocket();
  const sockaddr_in local = endpoint(INADDR_ANY, port);
  const int error = socket != INVALID_SOCKET && bind(socket, generic(local), sizeof local) == 0 ? 0 : WSAGetLastError();
  if (socket != INVALID_SOCKET) closesocket(socket);
  return error == 0 ? "" : std::system_category().message(error);
}

}  // namespace fringix::tool::diagnosis
