#include "head/model/data_store.h"

#include <utility>

#include "head/model/data_name.h"
#include "head/model/folder_store.h"
#include "head/model/memory_store.h"

namespace fringix::head {

Status DataStore::save(const std::string& name, Block block) {
  if (!isDataName(name) || block.empty()) return Status::badParameter;
  const std::lock_guard lock(mutex_);
  const Content others = contentWithout(name);
  if (others.blocks >= mostBlocks || others.bytes + block.size() > capacity_) return Status::outOfMemory;
  return write(name, std::move(block));
}

LentBlock DataStore::load(const std::string& name, MemoryBudget& budget) const {
  if (!isDataName(name)) return {};
  const std::lock_guard lock(mutex_);
  auto room = budget.take(sizeOf(name));
  if (!room) return {.noRoom = true};
  return {.block = read(name), .room = std::move(*room)};
}

std::unique_ptr<DataStore> makeDataStore(const HeadSettings& settings) {
  if (settings.storage.empty()) return std::make_unique<MemoryStore>(settings.dataMemory);
  return std::make_unique<FolderStore>(settings.storage, settings.dataMemory);
}

}  // namespace fringix::head
