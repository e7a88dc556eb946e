#include "heads/open_head.h"

#include <fmt/format.h>

#include <cstdio>

#include "console/explain.h"
#include "console/progress_bar.h"
#include "console/terminal.h"

namespace fringix::tool {
namespace {

Device openBySerial(Context& context) {
  context.address = fmt::format("serial number {}", context.serial);
  const TransientLine line(stderr, isTerminal(stderr), fmt::format("searching for {} ...", context.address));
  Device head = Device::openBySerial(context.serial);
  context.address = head.key().address;
  return head;
}

}  // namespace

Device openHead(Context& context) {
  if (context.bySerial) return openBySerial(context);
  const TransientLine line(stderr, isTerminal(stderr), fmt::format("connecting to {}:{} ...", context.address, commandPort));
  return Device(context.address);
}

bool isConnected(const Device& head) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  return SLGetCameraSize(head.handle(), &width, &height) == SLALL_OKAY && width != 0xFFFFFFFF;
}

}  // namespace fringix::tool
