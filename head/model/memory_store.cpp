#include "head/model/memory_store.h"

#include <utility>

namespace fringix::head {

DataStore::Content MemoryStore::contentWithout(const std::string& name) const {
  Content content;
  for (const auto& [other, block] : blocks_) {
    if (other == name) continue;
    content.bytes += block->size();
    ++content.blocks;
  }
  return content;
}

std::size_t MemoryStore::sizeOf(const std::string& name) const {
  const auto found = blocks_.find(name);
  return found != blocks_.end() ? found->second->size() : 0;
}

Status MemoryStore::write(const std::string& name, Block block) {
  blocks_[name] = std::make_shared<const Block>(std::move(block));
  return Status::ok;
}

SharedBlock MemoryStore::read(const std::string& name) const {
  const auto found = blocks_.find(name);
  return found != blocks_.end() ? found->second : nullptr;
}

}  // namespace fringix::head
