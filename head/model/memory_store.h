// Data blocks that last as long as the head.
#pragma once

#include <map>
#include <string>

#include "head/model/data_store.h"

namespace fringix::head {

class MemoryStore : public DataStore {
 public:
  using DataStore::DataStore;

 private:
  Content contentWithout(const std::string& name) const override;
  std::size_t sizeOf(const std::string& name) const override;
  Status write(const std::string& name, Block block) override;
  SharedBlock read(const std::string& name) const override;

  std::map<std::string, SharedBlock> blocks_;
};

}  // namespace fringix::head
