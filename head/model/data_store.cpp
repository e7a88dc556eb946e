#include "head/model/data_store.h"

#include <utility>

#include "head/model/data_name.h"
#include "head/model/folder_store.h"
#include "head/model/memory_store.h"

namespace fringix::head {

Status DataStore::save(const std::string& name, Block block) {
  if (!isDataName(name) || block.empty()) return Status::badParameter;
  const std::lock_guard lock(mutex_);
  if (sizeWithout(name) + block.size() > capacity_) return Status::outOfMemory;
  return write(name, std::move(block));
}

SharedBlock DataStore::load(const std::string& name) const {
  if (!isDataName(name)) return nullptr;
  const std::lock_guard lock(mutex_);
  return read(name);
}

std::unique_ptr<DataStore> makeDataStore(const HeadSettings& settings) {
  if (settings.storage.empty()) return std::make_unique<MemoryStore>(settings.dataMemory);
  return std::make_unique<FolderStore>(settings.storage, settings.dataMemory);
}

}  // namespace fringix::head
