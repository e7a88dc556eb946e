#include "head/commands/transfers.h"

#include <chrono>

namespace fringix::head {

namespace {

// Until `tried` has succeeded or the time is over.
template <class Try>
void tryInTime(Call& call, Try tried) {
  constexpr std::chrono::milliseconds interval{10};
  const auto end = std::chrono::steady_clock::now() + call.model.settings().roomLimit;
  while (!tried() && std::chrono::steady_clock::now() < end) call.wire.pause(interval);
}

}  // namespace

std::optional<MemoryBudget::Share> takeRoom(Call& call, std::size_t bytes) {
  std::optional<MemoryBudget::Share> room;
  tryInTime(call, [&] {
    room = call.model.transfers().take(bytes);
    return room.has_value();
  });
  return room;
}

std::optional<MemoryBudget::Share> takeRoomForPattern(Call& call) {
  return takeRoom(call, call.model.settings().projector.pixels() * sizeof(Colour));
}

LentBlock borrowBlock(Call& call, const std::string& name) {
  LentBlock lent;
  tryInTime(call, [&] {
    lent = call.model.data().load(name, call.model.transfers());
    return !lent.noRoom;
  });
  return lent;
}

}  // namespace fringix::head
