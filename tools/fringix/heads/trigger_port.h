// Who has the UDP port on which the triggers of all heads arrive. The library's listeners share it among themselves and say nothing
// when another program has it: then no trigger comes.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "console/explain.h"

namespace fringix::tool {

inline constexpr std::uint16_t triggerPort = 44331;

struct PortHolder {
  std::int64_t process = 0;       // 0: the system does not tell
  std::string program;            // empty: the system does not tell
  std::string user;               // the same
  bool passesTriggersOn = false;  // to the listeners of this process: it is this process, or another one that shares with it
};

// Nothing where the system does not tell who has ports.
std::optional<std::vector<PortHolder>> triggerPortHolders();

// Whether triggers reach this process when these have the port.
bool triggersArrive(const std::vector<PortHolder>& holders);

// Why they do not.
Explanation explainHolders(const std::vector<PortHolder>& holders);

// Throws Failure when no trigger can arrive. `listening`: this process has open sessions, whose listeners have `limit` to get the port,
// because they may have just been started, or wait for one that ends. Without, it is enough that no stranger has it.
void requireTriggers(bool listening, std::chrono::milliseconds limit);

}  // namespace fringix::tool
