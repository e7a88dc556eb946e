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
  SharedBlock block = read(name);
  if (block == nullptr) block = own(name);
  return {.block = std::move(block), .room = std::move(*room)};
}

void DataStore::provide(const std::string& name, std::function<Block()> make) {
  const std::lock_guard lock(mutex_);
  provided_[name] = {std::move(make)};
}

// All clients share it, so it takes no room of its own.
SharedBlock DataStore::own(const std::string& name) const {
  const auto found = provided_.find(name);
  if (found == provided_.end()) return nullptr;
  OwnBlock& block = found->second;
  if (block.made == nullptr) block.made = std::make_shared<const Block>(block.make());
  return block.made;
}

std::unique_ptr<DataStore> makeDataStore(const HeadSettings& settings) {
  if (settings.storage.empty()) return std::make_unique<MemoryStore>(settings.dataMemory);
  return std::make_unique<FolderStore>(settings.storage, settings.dataMemory);
}

}  // namespace fringix::head
