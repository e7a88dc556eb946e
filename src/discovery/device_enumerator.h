// Finds the heads on the local networks and keeps the list of those that answered last.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "discovery/announce_reply.h"
#include "platform/socket.h"

namespace fringix {

struct DeviceListEntry {
  std::string ipAddress;  // of the reply's sender
  const char* modelName = nullptr;
  AnnounceReply reply;
};

// The list is process-wide. Scans run one after the other under the lock; reading the list takes no lock and must not happen
// while another thread scans. Texts of the list stay where they are until the next scan.
class DeviceEnumerator {
 public:
  static DeviceEnumerator& instance() noexcept;

  // Asks every network in turn and makes the list anew, sorted by serial number. Blocks for 300 ms a network, and 300 ms more from
  // each reply on. What the network refuses adds no entries. Gives the number of entries.
  std::size_t ScanForDevices();

  // Null for an index outside of the list, or above 255.
  const DeviceListEntry* entry(std::int32_t index) const noexcept;

  // In a forked child, whose parent may be scanning: the list is empty. What was handed out of it stays valid.
  void forget() noexcept;

 private:
  void askNetwork(const std::string& broadcastAddress);
  bool takeThoseThatWait(platform::Socket& socket);
  void take(std::string_view datagram, std::uint32_t sender);

  std::mutex lock_;
  std::vector<DeviceListEntry> list_;
};

}  // namespace fringix
