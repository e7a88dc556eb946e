// A small head with a client on it, for tests of what crosses the wire.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "head/serving/head_server.h"
#include "raw_client.h"

namespace fringix::head {

inline constexpr Size smallCamera{64, 48};
inline constexpr std::size_t frameBytes = std::size_t{64} * 48;
inline constexpr Size smallProjector{32, 20};
inline constexpr std::int32_t smallSerial = 4711;

inline HeadSettings smallHead() {
  HeadSettings settings;
  settings.serial = smallSerial;
  settings.camera = smallCamera;
  settings.projector = smallProjector;
  settings.imageTime = std::chrono::milliseconds(0);
  return settings;
}

class RunningHead : public testing::Test {
 protected:
  explicit RunningHead(const HeadSettings& settings = smallHead()) : server(settings) {
    server.start();
    client = std::make_unique<RawClient>();
    client->greet();
  }

  void say(std::string_view command, std::initializer_list<std::int32_t> arguments = {}) {
    client->sendText(command);
    client->sendInts(arguments);
  }

  // For commands whose whole reply is one integer.
  std::int32_t ask(std::string_view command, std::initializer_list<std::int32_t> arguments = {}) {
    say(command, arguments);
    return client->receiveInt();
  }

  // For commands whose whole reply is integers.
  std::vector<std::int32_t> askInts(std::size_t count, std::string_view command, std::initializer_list<std::int32_t> arguments = {}) {
    say(command, arguments);
    return receiveInts(count);
  }

  std::vector<std::int32_t> receiveInts(std::size_t count) {
    std::vector<std::int32_t> values(count);
    for (auto& value : values) value = client->receiveInt();
    return values;
  }

  std::vector<std::uint8_t> askBytes(std::size_t count, std::string_view command, std::initializer_list<std::int32_t> arguments = {}) {
    say(command, arguments);
    return client->receiveBytes(count);
  }

  // Neither side is a byte ahead of the other.
  void expectInStep() { EXPECT_EQ(ask("21MSG_SLGetSerial"), smallSerial); }

  std::uint32_t allocate(std::int32_t imageCount) {
    const std::int32_t id = ask("11MSG_SLSeqAlloc", {imageCount});
    EXPECT_EQ(client->receiveInt(), 0);
    return static_cast<std::uint32_t>(id);
  }

  HeadServer server;
  std::unique_ptr<RawClient> client;
};

}  // namespace fringix::head
