// Data blocks as files of one folder. Files that people put there are blocks too, when their names can be a block's. While a store
// lives, no other one has its folder, in whatever process: what they keep together would be more than each allows.
#pragma once

#include <filesystem>
#include <string>

#include "head/model/data_store.h"
#include "platform/file_lock.h"

namespace fringix::head {

class FolderStore : public DataStore {
 public:
  FolderStore(std::filesystem::path folder, std::size_t capacity);  // makes the folder; throws std::runtime_error with a text for people

 private:
  Content contentWithout(const std::string& name) const override;
  std::size_t sizeOf(const std::string& name) const override;
  Status write(const std::string& name, Block block) override;
  SharedBlock read(const std::string& name) const override;

  const std::filesystem::path folder_;
  const platform::FileLock lock_;
};

}  // namespace fringix::head
