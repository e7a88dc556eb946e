// The named data blocks that a head keeps, in memory or in a folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "head/settings/head_settings.h"
#include "head/settings/status.h"

namespace fringix::head {

using Block = std::vector<std::uint8_t>;
using SharedBlock = std::shared_ptr<const Block>;

// Safe to use from several threads. A name that can be no block's is refused before the place of the blocks hears of it.
class DataStore {
 public:
  explicit DataStore(std::size_t capacity) : capacity_(capacity) {}  // in bytes of all blocks together
  virtual ~DataStore() = default;
  DataStore(const DataStore&) = delete;
  DataStore& operator=(const DataStore&) = delete;

  std::size_t capacity() const { return capacity_; }

  Status save(const std::string& name, Block block);  // in place of an older one
  SharedBlock load(const std::string& name) const;    // null where there is none

 private:
  virtual std::uint64_t sizeWithout(const std::string& name) const = 0;  // of all other blocks, in bytes
  virtual Status write(const std::string& name, Block block) = 0;        // wholly or not at all
  virtual SharedBlock read(const std::string& name) const = 0;

  const std::size_t capacity_;
  mutable std::mutex mutex_;
};

// In settings.storage, or in memory when that is empty. Throws std::runtime_error when the folder cannot be made.
std::unique_ptr<DataStore> makeDataStore(const HeadSettings& settings);

}  // namespace fringix::head
