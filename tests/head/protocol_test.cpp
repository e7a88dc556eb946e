// The protocol version that brought each command, written down anew.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "head/commands/commands.h"

namespace fringix::head {
namespace {

struct Gate {
  std::string_view name;
  std::int32_t since;
};

constexpr Gate gates[] = {
    {"47MSG_SLGetTemperature", 2400},      {"84MSG_SLGetGPIOStatus", 2400},
    {"200MSG_SLRS232Exec", 2500},          {"220MSG_SLGetLiveImageEx", 2600},
    {"221MSG_SLGetLiveImageROIEx", 2600},  {"222MSG_SLGetImageIndexEx", 2600},
    {"223MSG_SLGetImageIndexROIEx", 2600}, {"224MSG_SLNumberOfChannels", 2600},
    {"225MSG_SLGetLiveImageLowRes", 2600}, {"226MSG_SLGetLiveImageROILowRes", 2600},
    {"230MSG_SLSetGPIOValue", 2700},       {"240MSG_SLGETUPTIME", 2800},
    {"250MSG_SLSETDMDSTATE", 2900},        {"260MSG_SLGETPROJTEMP", 3000},
    {"270MSG_SLGETPROJTEMP", 3000},        {"280MSG_SLGETEXPOSURE", 3100},
    {"300MSG_SLClearMask", 3100},          {"290MSG_SLSetMask", 3200},
    {"310MSG_EXEC_PROJCMD", 3300},         {"320MSG_SET_DIRECT_LEDPOWER", 3300},
};

TEST(ProtocolTest, GatedCommandsCameWithTheirVersions) {
  for (const Gate& gate : gates) {
    EXPECT_EQ(findCommand(gate.name, gate.since - 1), nullptr) << gate.name;
    const Command* command = findCommand(gate.name, gate.since);
    ASSERT_NE(command, nullptr) << gate.name;
    EXPECT_EQ(command->name, gate.name);
  }
}

TEST(ProtocolTest, EveryHeadKnowsAllOtherCommands) {
  for (const CommandFamily& family : commandFamilies()) {
    for (const Command& command : family) {
      const bool gated = std::any_of(std::begin(gates), std::end(gates), [&](const Gate& gate) { return gate.name == command.name; });
      EXPECT_EQ(findCommand(command.name, 0) == nullptr, gated) << command.name;
    }
  }
}

TEST(ProtocolTest, EachNameStandsForOneCommand) {
  for (const CommandFamily& family : commandFamilies()) {
    for (const Command& command : family) EXPECT_EQ(findCommand(command.name, 9999), &command) << command.name;
  }
}

}  // namespace
}  // namespace fringix::head
