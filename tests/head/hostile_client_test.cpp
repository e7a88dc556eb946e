// Whatever a client says, the head lives on.
#include <random>

#include "head/commands/commands.h"
#include "running_head.h"

namespace fringix::head {
namespace {

// On a busy machine many of the strangers are still there when the next ones come.
HeadSettings roomyHead() {
  HeadSettings settings = smallHead();
  settings.mostClients = 1000;
  return settings;
}

class HostileClientTest : public RunningHead {
 protected:
  HostileClientTest() : RunningHead(roomyHead()) {}

  // Sends the command with 32 numbers after it, some of them sizes and counts, at once, and goes without reading an answer.
  void strike(std::string_view name) {
    RawClient stranger;
    stranger.greet();
    std::string bytes = (name.size() < 10 ? "     " : "    ") + std::to_string(name.size()) + std::string(name);
    for (int i = 0; i < 32; ++i) {
      const std::uint32_t number = nextNumber();
      for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
    }
    stranger.sendRaw(bytes);
  }

  std::uint32_t nextNumber() {
    constexpr std::uint32_t edges[] = {0, 1, 2, 16, 255, 256, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    const auto number = static_cast<std::uint32_t>(generator());
    return number % 8 == 0 ? number : edges[number / 8 % std::size(edges)];
  }

  std::mt19937 generator{20};
};

TEST_F(HostileClientTest, NoArgumentsEndTheHead) {
  allocate(256);
  for (const CommandFamily& family : commandFamilies()) {
    for (const Command& command : family) {
      for (int i = 0; i < 8; ++i) strike(command.name);
    }
  }
  expectInStep();
}

TEST_F(HostileClientTest, NoBytesEndTheHead) {
  for (int i = 0; i < 50; ++i) {
    RawClient stranger;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(i) * 20);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(generator() % 64);
    stranger.sendBytes(bytes);
  }
  expectInStep();
}

}  // namespace
}  // namespace fringix::head
