#include "minimal_listener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cstring>

#include "head.h"

namespace fringix::bench {

MinimalListener::MinimalListener(std::uint16_t port, TriggerArrival& arrival)
    : arrival_(arrival), socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket"), stop_(eventfd(0, EFD_CLOEXEC), "eventfd") {
  sockaddr_in local{};
  local.sin_family = AF_INET;
  local.sin_port = htons(port);
  if (bind(socket_.get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) throwSystemError("minimal listener: bind");
  thread_ = std::thread([this] { listen(); });
}

MinimalListener::~MinimalListener() {
  eventfd_write(stop_.get(), 1);
  thread_.join();
}

void MinimalListener::listen() {
  const in_addr_t head = inet_addr(headAddress);
  std::array<pollfd, 2> entries{pollfd{stop_.get(), POLLIN, 0}, pollfd{socket_.get(), POLLIN, 0}};
  while (poll(entries.data(), entries.size(), -1) > 0 && entries[0].revents == 0) {
    std::array<char, 20> text{};
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t received = recvfrom(socket_.get(), text.data(), text.size(), MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&sender), &size);
    if (received <= 0 || received > 18 || sender.sin_addr.s_addr != head) continue;
    if (memmem(text.data(), static_cast<std::size_t>(received), "02UDP_GPIO", 10) != nullptr) arrival_.note();
  }
}

}  // namespace fringix::bench
