#include "discovery/device_enumerator.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <string_view>

#include "diagnosis/trace.h"
#include "discovery/broadcast_addresses.h"
#include "platform/process_wide.h"
#include "platform/socket.h"

namespace fringix {

namespace {

constexpr std::uint16_t announcePort = 44332;
constexpr std::string_view announceRequest = "01UDP_SLANNOUNCE";  // without the length field that names have in a session
constexpr std::chrono::milliseconds silenceThatEnds{300};
constexpr std::size_t bufferSize = 300;
constexpr std::ptrdiff_t longestReply = 298;
constexpr int receiveBuffer = 8 << 20;  // bytes; a burst of many heads waits there until it is read
constexpr int mostInVain = 100;  // waits that end at once and leave nothing to receive; a socket that only fails would go on for ever
constexpr std::size_t longestAccess = 256;  // entries beyond are listed and counted, but never handed out; kept on purpose

platform::Socket openBroadcastSocket() noexcept {
  platform::Socket socket = platform::Socket::openDatagram();
  socket.setBroadcast(true);
  socket.setReceiveBuffer(receiveBuffer);
  socket.setNonBlocking(true);  // a datagram that is announced and then found to be damaged must not block the receive
  return socket;
}

bool ask(platform::Socket& socket, const std::string& address) noexcept {
  const platform::Ipv4Endpoint heads{platform::parseIpv4(address.c_str()), announcePort};
  return socket.sendTo(announceRequest.data(), announceRequest.size(), heads) == static_cast<std::ptrdiff_t>(announceRequest.size());
}

bool isLimitedBroadcast(const std::string& address) { return address.find("255.255.255.255") != std::string::npos; }

// What was handed out of the list stays valid to the end, and another thread may still scan then.
platform::Lasting<DeviceEnumerator> ofTheProcess;

[[maybe_unused]] const bool told = platform::inForkedChildren([] { ofTheProcess->forget(); });

}  // namespace

DeviceEnumerator& DeviceEnumerator::instance() noexcept { return *ofTheProcess; }

void DeviceEnumerator::forget() noexcept {
  platform::beginAnew(lock_);
  platform::beginAnew(list_);
}

std::size_t DeviceEnumerator::ScanForDevices() {
  trace("DeviceEnumerator: Scan for Devices");
  const std::lock_guard guard(lock_);
  list_.clear();
  for (const std::string& address : CollectBroadcastAddresses()) {
    if (!isLimitedBroadcast(address)) askNetwork(address);
  }
  // Heads that answered twice stand next to each other, the first answer first; kept on purpose.
  std::stable_sort(list_.begin(), list_.end(), [](const auto& a, const auto& b) { return a.reply.serial < b.reply.serial; });
  trace("DeviceEnumerator: %i Device(s) found", static_cast<int>(list_.size()));
  return list_.size();
}

void DeviceEnumerator::askNetwork(const std::string& broadcastAddress) {
  const platform::SocketLibrary library;
  if (!library.usable()) return;
  platform::Socket socket = openBroadcastSocket();
  if (!socket.valid() || !ask(socket, broadcastAddress)) return;
  int inVain = 0;  // waits since the last datagram
  while (inVain < mostInVain && socket.waitReadable(silenceThatEnds) == platform::Readiness::ready) {
    inVain = takeThoseThatWait(socket) ? 0 : inVain + 1;
  }
}

// All that is there, then the next wait: a burst of replies is read as fast as it can be. Whether there was any.
bool DeviceEnumerator::takeThoseThatWait(platform::Socket& socket) {
  std::array<char, bufferSize> buffer;
  platform::Ipv4Endpoint sender;
  std::ptrdiff_t size = socket.receiveFrom(buffer.data(), buffer.size(), &sender);
  const bool any = size >= 0;
  for (; size > 0; size = socket.receiveFrom(buffer.data(), buffer.size(), &sender)) {
    if (size <= longestReply) take({buffer.data(), static_cast<std::size_t>(size)}, sender.address);
  }
  return any;
}

void DeviceEnumerator::take(std::string_view datagram, std::uint32_t sender) {
  const AnnounceReply reply = parseAnnounceReply(datagram);
  list_.push_back({platform::formatIpv4(sender), modelName(reply.modelCode), reply});
}

const DeviceListEntry* DeviceEnumerator::entry(std::int32_t index) const noexcept {
  const auto place = static_cast<std::size_t>(index);
  if (index < 0 || place >= longestAccess || place >= list_.size()) return nullptr;
  trace("DeviceEnumerator: returning entry %i", index);
  return &list_[place];
}

}  // namespace fringix
