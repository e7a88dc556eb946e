#include "platform/datagram.h"

#include <windows.h>
#include <winsock2.h>

#include <exception>
#include <vector>

namespace fringix::platform {

namespace {

bool sendBound(std::uint32_t from, Ipv4Endpoint to, const void* data, std::size_t size) noexcept {
  Socket socket = Socket::openDatagram();
  return socket.bind({from, 0}) && socket.sendTo(data, size, to) == static_cast<std::ptrdiff_t>(size);
}

// Wine binds a datagram socket to all addresses, whatever address it is given, and the datagram leaves from 127.0.0.1.
bool forgetsTheAddress() noexcept {
  static const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return wine;
}

// The datagram with a header of our own (both ports, length, no checksum): a raw socket keeps its address there too.
std::vector<char> withHeader(Ipv4Endpoint to, const void* data, std::size_t size) {
  const std::size_t length = size + 8;
  std::vector<char> packet;
  for (const std::size_t field : {std::size_t{to.port}, std::size_t{to.port}, length, std::size_t{0}}) {
    packet.push_back(static_cast<char>(field >> 8 & 0xFFU));
    packet.push_back(static_cast<char>(field & 0xFFU));
  }
  packet.insert(packet.end(), static_cast<const char*>(data), static_cast<const char*>(data) + size);
  return packet;
}

bool sendRaw(Socket& socket, std::uint32_t from, Ipv4Endpoint to, const void* data, std::size_t size) noexcept try {
  const std::vector<char> packet = withHeader(to, data, size);
  return socket.bind({from, 0}) && socket.sendTo(packet.data(), packet.size(), to) == static_cast<std::ptrdiff_t>(packet.size());
} catch (const std::exception&) {
  return false;
}

}  // namespace

bool sendDatagram(std::uint32_t from, Ipv4Endpoint to, const void* data, std::size_t size) noexcept {
  if (!forgetsTheAddress()) return sendBound(from, to, data, size);
  Socket raw(WSASocketW(AF_INET, SOCK_RAW, IPPROTO_UDP, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
  return raw.valid() ? sendRaw(raw, from, to, data, size) : sendBound(from, to, data, size);  // raw sockets take an administrator
}

}  // namespace fringix::platform
