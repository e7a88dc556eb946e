#include "relay/announcement.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "platform/ipv4_table.h"
#include "ports/search_port.h"

namespace fringix::tool {
namespace {

constexpr std::size_t longestAnnouncement = 298;
constexpr std::chrono::milliseconds patience{1000};

// Heads are asked by broadcast, where there is one: of several on one machine only one would hear what is for it alone.
std::uint32_t whereToAsk(std::uint32_t head) {
  const auto rows = platform::ipv4Table();
  const auto row = std::find_if(rows.begin(), rows.end(), [=](const auto& entry) { return ((head ^ entry.address) & entry.mask) == 0; });
  return row == rows.end() || !row->broadcast ? head : head | ~row->mask;
}

}  // namespace

std::string askForAnnouncement(std::uint32_t head) {
  using Clock = std::chrono::steady_clock;
  platform::Socket socket = platform::Socket::openDatagram();
  socket.setBroadcast(true);
  socket.sendTo(ports::searchRequest.data(), ports::searchRequest.size(), {whereToAsk(head), ports::searchPort});
  const auto until = Clock::now() + patience;
  for (auto left = patience; left.count() > 0; left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now())) {
    std::array<char, longestAnnouncement + 1> text;
    platform::Ipv4Endpoint sender;
    if (socket.waitReadable(left) != platform::Readiness::ready) break;
    const std::ptrdiff_t size = socket.receiveFrom(text.data(), text.size(), &sender);
    const bool fits = size > 0 && size <= static_cast<std::ptrdiff_t>(longestAnnouncement);
    if (fits && sender.address == head) return {text.data(), static_cast<std::size_t>(size)};
  }
  return {};
}

}  // namespace fringix::tool
