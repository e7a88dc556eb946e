// Stands between clients and a head: takes connections, searches and triggers, hands them on, and records all of it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/socket.h"
#include "recording/recorder.h"
#include "relay/relayed_connection.h"
#include "relay/trigger_relay.h"

namespace fringix::tool {

struct RelaySettings {
  std::string head;
  std::string listening;
  std::chrono::milliseconds limit;  // for connecting to the head
};

class Relay {
 public:
  using Warning = std::function<void(const std::string& what)>;  // called on the relay's threads

  // Listens; throws std::runtime_error when the address cannot be listened on.
  Relay(RelaySettings settings, Warning warning);
  ~Relay() { stop(); }
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  recording::Header header() const;

  // From here on clients are served. The recorder outlives it.
  void start(recording::Recorder& recorder);
  void stop() noexcept;  // ends all connections

  std::size_t endedConnections() const { return ended_; }

 private:
  void acceptClients() noexcept;
  void acceptClient();
  void forgetFinished();
  void answerSearches() noexcept;
  void passOnTrigger(std::string_view text);

  const platform::SocketLibrary library_;
  const RelaySettings settings_;
  const Warning warning_;
  const std::uint32_t headAddress_;
  const std::uint32_t ownAddress_;
  std::string announcement_;
  platform::Socket listener_;
  platform::Socket searches_;
  recording::Recorder* recorder_ = nullptr;
  std::atomic<bool> stopping_ = false;
  std::atomic<std::size_t> ended_ = 0;
  std::uint32_t opened_ = 0;
  std::mutex connectionsMutex_;
  std::list<RelayedConnection> connections_;
  std::optional<TriggerRelay> triggers_;
  std::vector<std::thread> threads_;
};

}  // namespace fringix::tool
