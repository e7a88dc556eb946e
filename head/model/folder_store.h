// Data blocks as files of one folder. Files that people put there are blocks too, when their names can be a block's.
#pragma once

#include <filesystem>
#include <string>

#include "head/model/data_store.h"

namespace fringix::head {

class FolderStore : public DataStore {
 public:
  FolderStore(std::filesystem::path folder, std::size_t capacity);  // makes the folder, or throws std::runtime_error

 private:
  std::uint64_t sizeWithout(const std::string& name) const override;
  Status write(const std::string& name, Block block) override;
  SharedBlock read(const std::string& name) const override;

  const std::filesystem::path folder_;
};

}  // namespace fringix::head
