// One client's connection, handed on to the head and back, and recorded.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <thread>

#include "platform/socket.h"
#include "recording/recorder.h"

namespace fringix::tool {

struct HeadPlace {
  std::uint32_t address = 0;
  std::chrono::milliseconds limit{0};  // for connecting to it
};

class RelayedConnection {
 public:
  // Connects to the head on a thread of its own; the recorder outlives it. `number` is that of the connection in the recording.
  RelayedConnection(platform::Socket client, platform::Ipv4Endpoint peer, std::uint32_t number, HeadPlace head,
                    recording::Recorder& recorder);
  ~RelayedConnection();  // ends it
  RelayedConnection(const RelayedConnection&) = delete;
  RelayedConnection& operator=(const RelayedConnection&) = delete;

  std::uint32_t clientAddress() const { return peer_.address; }
  bool finished() const { return finished_; }

 private:
  void run() noexcept;
  bool connect();
  void pump(platform::Socket& from, platform::Socket& to, recording::Kind kind, recording::Kind closing) noexcept;
  bool sendAll(platform::Socket& to, std::span<const std::uint8_t> bytes) noexcept;
  void end(recording::Kind kind, recording::Ending ending) noexcept;

  platform::Socket client_;
  platform::Socket headSide_;
  const platform::Ipv4Endpoint peer_;
  const std::uint32_t number_;
  const HeadPlace head_;
  recording::Recorder& recorder_;
  std::atomic<bool> over_ = false;
  std::atomic<bool> reset_ = false;
  std::atomic<bool> finished_ = false;
  std::thread thread_;
};

}  // namespace fringix::tool
