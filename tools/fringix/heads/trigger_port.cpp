#include "heads/trigger_port.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <thread>

namespace fringix::tool {
namespace {

constexpr std::chrono::milliseconds retryInterval{20};

std::string describe(const PortHolder& holder) {
  std::string text = holder.program.empty() ? "a program" : fmt::format("\"{}\"", holder.program);
  if (holder.process != 0) text += fmt::format(" (process {})", holder.process);
  if (!holder.user.empty()) text += fmt::format(" of user {}", holder.user);
  return text;
}

}  // namespace

// Of two that have the port, the system gives a datagram to one.
bool triggersArrive(const std::vector<PortHolder>& holders) { return holders.size() == 1 && holders.front().passesTriggersOn; }

Explanation explainHolders(const std::vector<PortHolder>& holders) {
  std::string strangers;
  for (const PortHolder& holder : holders) {
    if (!holder.passesTriggersOn) strangers += (strangers.empty() ? "" : " and ") + describe(holder);
  }
  if (strangers.empty())
    return {fmt::format("triggers cannot arrive: UDP port {} could not be opened on this machine", triggerPort),
            "Run the command again with --trace to see what the library says of it.", "trigger-port"};
  return {fmt::format("triggers cannot arrive: {} has UDP port {}", strangers, triggerPort),
          "End that, then watch again. Programs share the port only when they use this library and belong to the same user or to root.",
          "trigger-port"};
}

void requireTriggers(bool listening, std::chrono::milliseconds limit) {
  const auto until = std::chrono::steady_clock::now() + limit;
  for (;;) {
    const auto holders = triggerPortHolders();
    if (!holders || triggersArrive(*holders) || (!listening && holders->empty())) return;
    if (std::chrono::steady_clock::now() >= until) throw Failure(explainHolders(*holders));
    std::this_thread::sleep_for(retryInterval);
  }
}

}  // namespace fringix::tool
