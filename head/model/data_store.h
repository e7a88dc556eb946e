// The named data blocks that a head keeps, in memory or in a folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "head/model/memory_budget.h"
#include "head/settings/head_settings.h"
#include "head/settings/status.h"

namespace fringix::head {

using Block = std::vector<std::uint8_t>;
using SharedBlock = std::shared_ptr<const Block>;

// A block on its way to a client, with its share of the memory for that: it may have been replaced in the store since.
struct LentBlock {
  bool noRoom = false;  // the block exists, but there is no share left for it just now
  SharedBlock block{};  // null where there is none
  MemoryBudget::Share room{};
};

// Safe to use from several threads. A name that can be no block's is refused before the place of the blocks hears of it.
class DataStore {
 public:
  static constexpr std::size_t mostBlocks = 1000;  // so that no client fills the head's memory, or the folder, with names

  explicit DataStore(std::size_t capacity) : capacity_(capacity) {}  // in bytes of all blocks together
  virtual ~DataStore() = default;
  DataStore(const DataStore&) = delete;
  DataStore& operator=(const DataStore&) = delete;

  std::size_t capacity() const { return capacity_; }

  Status save(const std::string& name, Block block);  // in place of an older one
  LentBlock load(const std::string& name, MemoryBudget& budget) const;

  // What the head itself has under a name, as long as no client has saved a block there; made when it is first asked for. Takes none of
  // the capacity.
  void provide(const std::string& name, std::function<Block()> make);

 protected:
  struct Content {
    std::uint64_t bytes = 0;
    std::size_t blocks = 0;
  };

 private:
  struct OwnBlock {
    std::function<Block()> make;
    SharedBlock made{};
  };

  SharedBlock own(const std::string& name) const;

  virtual Content contentWithout(const std::string& name) const = 0;  // all other blocks
  virtual std::size_t sizeOf(const std::string& name) const = 0;      // 0 where there is none
  virtual Status write(const std::string& name, Block block) = 0;     // wholly or not at all
  virtual SharedBlock read(const std::string& name) const = 0;

  const std::size_t capacity_;
  mutable std::mutex mutex_;
  mutable std::map<std::string, OwnBlock> provided_;
};

// In settings.storage, or in memory when that is empty. Throws std::runtime_error when the folder cannot be made.
std::unique_ptr<DataStore> makeDataStore(const HeadSettings& settings);

}  // namespace fringix::head
