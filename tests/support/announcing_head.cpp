#include "support/announcing_head.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "platform/datagram.h"

namespace fringix::test {

namespace {

using platform::Socket;

constexpr std::uint16_t announcePort = 44332;
constexpr std::uint32_t loopback = 0x7F000001;
const Bytes theEnd = "end";

void send(Socket& socket, const Bytes& bytes, platform::Ipv4Endpoint receiver) {
  if (socket.sendTo(bytes.data(), bytes.size(), receiver) != static_cast<std::ptrdiff_t>(bytes.size())) {
    throw std::runtime_error("a datagram cannot be sent");
  }
}

bool sendFrom(const std::string& address, const Bytes& bytes, platform::Ipv4Endpoint receiver) {
  return platform::sendDatagram(platform::parseIpv4(address.c_str()), receiver, bytes.data(), bytes.size());
}

}  // namespace

AnnouncingHead::AnnouncingHead(std::vector<Announcement> replies) : listener_(Socket::openDatagram()), replies_(std::move(replies)) {
  listener_.setReuseAddress(true);
  if (!listener_.bind({0, announcePort})) throw std::runtime_error("the announcing head cannot listen");
  thread_ = std::thread([this] { serve(); });
}

AnnouncingHead::~AnnouncingHead() { requests(); }

const std::vector<Bytes>& AnnouncingHead::requests() {
  if (thread_.joinable()) {
    Socket socket = Socket::openDatagram();
    send(socket, theEnd, {loopback, announcePort});
    thread_.join();
  }
  return requests_;
}

void AnnouncingHead::serve() {
  for (;;) {
    std::array<char, 2000> buffer;
    platform::Ipv4Endpoint client;
    const std::ptrdiff_t size = listener_.receiveFrom(buffer.data(), buffer.size(), &client);
    const Bytes request(buffer.data(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(size, 0)));
    if (request == theEnd) return;
    if (client.address >> 24 != loopback >> 24) continue;
    requests_.push_back(request);
    answer(client);
  }
}

void AnnouncingHead::answer(platform::Ipv4Endpoint client) {
  for (const auto& [bytes, after, from] : replies_) {
    if (after > after.zero()) std::this_thread::sleep_for(after);
    if (from.empty()) {
      send(listener_, bytes, client);
    } else if (!sendFrom(from, bytes, client)) {
      throw std::runtime_error("no replies can come from " + from);
    }
  }
}

Bytes announcement(int serial, int modelCode, int info1) {
  return "S " + std::to_string(serial) + " M " + std::to_string(modelCode) + " I " + std::to_string(info1) + " 6 A 7 B 8 C 9 D 10 E 11";
}

bool canAnswerFrom(const std::string& address) {
  const platform::SocketLibrary library;
  Socket receiver = Socket::openDatagram();
  char byte = 0;
  platform::Ipv4Endpoint seen;
  return receiver.bind({loopback, 0}) && sendFrom(address, "x", receiver.localEndpoint()) && receiver.receiveFrom(&byte, 1, &seen) == 1 &&
         platform::formatIpv4(seen.address) == address;
}

}  // namespace fringix::test
