#include "heads/open_head.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "console/explain.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "heads/host_name.h"
#include "heads/probe.h"

namespace fringix::tool {
namespace {

std::string findBySerial(std::int32_t serial) {
  const TransientLine line(stderr, isTerminal(stderr), fmt::format("searching for serial number {} ...", serial));
  const std::vector<FoundDevice> heads = findDevices();
  const auto found = std::find_if(heads.begin(), heads.end(), [&](const FoundDevice& head) { return head.serial == serial; });
  if (found != heads.end()) return found->address;
  throw Failure({fmt::format("no head with serial number {} answers", serial),
                 "\"fringix list\" shows the heads that answer, up to 256. One in another network is reached by its address.",
                 "not-found"});
}

}  // namespace

void findAddress(Context& context) {
  if (context.bySerial) {
    context.address = fmt::format("serial number {}", context.serial);
    context.address = findBySerial(context.serial);
  } else {
    const TransientLine line(stderr, isTerminal(stderr), fmt::format("looking up {} ...", context.address));
    context.address = resolveAddress(context.address, context.timeout);
  }
}

// The library's own connecting waits as long as the system likes, so it is left out where it has no chance.
Device openAt(const std::string& address, std::chrono::milliseconds timeout) {
  const Finding finding = probe(address, timeout);
  if (finding.reach != Reach::head) throw Failure(explain(finding, address, timeout));
  return Device(address);
}

Device openHead(Context& context) {
  findAddress(context);
  const TransientLine line(stderr, isTerminal(stderr), fmt::format("connecting to {}:{} ...", context.address, commandPort));
  return openAt(context.address, context.timeout);
}

// The head has no better answer than that it has no picture.
void requireChannel(const Device& head, std::uint32_t channel, const std::string& address) {
  if (channel == 0) return;
  const std::uint32_t count = head.channelCount();
  if (channel < count) return;
  throw Failure({fmt::format("there is no channel {}: the head at {} has {}", channel, address,
                             count == 1 ? "1 channel, number 0" : fmt::format("{} channels, 0 to {}", count, count - 1)),
                 "Give one of these with --channel.", "no-channel"});
}

bool isConnected(const Device& head) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  return SLGetCameraSize(head.handle(), &width, &height) == SLALL_OKAY && width != 0xFFFFFFFF;
}

}  // namespace fringix::tool
