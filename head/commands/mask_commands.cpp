// The mask that darkens parts of everything that is projected.
#include <utility>

#include "head/commands/commands.h"
#include "head/commands/transfers.h"

namespace fringix::head {

namespace {

enum class Shades : std::uint32_t { graded = 0, onlyLightAndDark = 1 };

bool fits(std::uint32_t shades, std::uint32_t width, std::uint32_t height, Size projector) {
  return shades <= static_cast<std::uint32_t>(Shades::onlyLightAndDark) && width == static_cast<std::uint32_t>(projector.width) &&
         height == static_cast<std::uint32_t>(projector.height);
}

void setMask(Call& call) {
  const auto [shades, width, height] = call.wire.readInts<3>();
  const std::uint32_t size = width * height;  // clients count in 32 bits, however large the sides
  const bool possible = fits(shades, width, height, call.model.settings().projector);
  const auto room = possible ? takeRoom(call, size) : std::nullopt;
  if (!room) {
    call.wire.skip(size);
    return call.reply(possible ? Status::outOfMemory : Status::badParameter);
  }
  auto mask = call.wire.readBlock(size);
  if (Shades{shades} == Shades::onlyLightAndDark) {
    for (auto& part : mask) part = part != 0 ? 255 : 0;
  }
  call.reply(call.model.setMask(std::move(mask)));
}

constexpr Command commands[] = {
    {"290MSG_SLSetMask", 3200, setMask},
    {"300MSG_SLClearMask", 3100, [](Call& call) { call.model.clearMask(); }},
};

}  // namespace

CommandFamily maskCommands() { return commands; }

}  // namespace fringix::head
