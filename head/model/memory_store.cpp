#include "head/model/memory_store.h"

#include <utility>

namespace fringix::head {

std::uint64_t MemoryStore::sizeWithout(const std::string& name) const {
  std::uint64_t sum = 0;
  for (const auto& [other, block] : blocks_) sum += other != name ? block->size() : 0;
  return sum;
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
