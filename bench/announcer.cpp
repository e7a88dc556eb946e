#include "announcer.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

#include "head.h"

namespace fringix::bench {

namespace {

constexpr std::string_view request = "01UDP_SLANNOUNCE";
constexpr int firstSerial = 1001;

Descriptor listen() {
  Descriptor result(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "announcer: socket");
  sockaddr_in all{};
  all.sin_family = AF_INET;
  all.sin_port = htons(announcePort);
  if (bind(result.get(), reinterpret_cast<const sockaddr*>(&all), sizeof all) != 0) throwSystemError("announcer: bind");
  return result;
}

std::string announcementOf(int head) {
  return "SERIAL " + std::to_string(firstSerial + head) + " MODEL 1 PROTOCOL " + std::to_string(protocolVersion) +
         " 2 CAMERA_WIDTH 1280 CAMERA_HEIGHT 1024 PROJECTOR_WIDTH 1280 PROJECTOR_HEIGHT 800 UPTIME 12";
}

[[noreturn]] void answer(int socket, int heads) {
  for (;;) {
    std::array<char, 64> text;
    sockaddr_in client{};
    socklen_t size = sizeof client;
    const ssize_t received = recvfrom(socket, text.data(), text.size(), 0, reinterpret_cast<sockaddr*>(&client), &size);
    if (received < 0) throwSystemError("announcer: receive");
    if (std::string_view(text.data(), static_cast<std::size_t>(received)) != request) continue;
    for (int head = 0; head < heads; ++head) {
      const std::string announcement = announcementOf(head);
      if (sendto(socket, announcement.data(), announcement.size(), 0, reinterpret_cast<const sockaddr*>(&client), size) < 0)
        throwSystemError("announcer: send");
    }
  }
}

}  // namespace

Announcer::Announcer(int heads) : socket_(listen()), process_([this, heads] { answer(socket_.get(), heads); }) {
  if (clock_getcpuclockid(process_.id(), &cpuClock_) != 0) throw std::runtime_error("announcer: no processor clock");
}

}  // namespace fringix::bench
