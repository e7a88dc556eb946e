#include "minimal_search.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <string_view>

#include "descriptor.h"
#include "head.h"
#include "private_network.h"

namespace fringix::bench {

namespace {

constexpr std::string_view request = "01UDP_SLANNOUNCE";
constexpr int silenceThatEnds = 300;  // ms

void ask(const Descriptor& socket, const char* network) {
  const int on = 1;
  if (setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0) throwSystemError("search: broadcast");
  sockaddr_in heads{};
  heads.sin_family = AF_INET;
  heads.sin_port = htons(announcePort);
  heads.sin_addr.s_addr = inet_addr(network);
  if (sendto(socket.get(), request.data(), request.size(), 0, reinterpret_cast<const sockaddr*>(&heads), sizeof heads) < 0)
    throwSystemError("search: send");
}

std::size_t answers(const Descriptor& socket) {
  std::size_t count = 0;
  pollfd entry{socket.get(), POLLIN, 0};
  while (poll(&entry, 1, silenceThatEnds) > 0) {
    std::array<char, 300> text;
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    while (recvfrom(socket.get(), text.data(), text.size(), MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&sender), &size) > 0) ++count;
  }
  return count;
}

}  // namespace

std::size_t minimalSearch() {
  std::size_t count = 0;
  for (const char* network : privateNetworks) {
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "search: socket");
    ask(socket, network);
    count += answers(socket);
  }
  return count;
}

}  // namespace fringix::bench
