// The memory that a client needs while it sends or fetches something large: a share of what all clients have together.
#pragma once

#include <cstddef>
#include <optional>

#include "head/commands/commands.h"
#include "head/model/data_store.h"
#include "head/model/memory_budget.h"

namespace fringix::head {

// All of these wait for other clients to finish when the memory is taken, as long as the settings allow.
std::optional<MemoryBudget::Share> takeRoom(Call& call, std::size_t bytes);
std::optional<MemoryBudget::Share> takeRoomForPattern(Call& call);  // of the projector's size
LentBlock borrowBlock(Call& call, const std::string& name);

}  // namespace fringix::head
