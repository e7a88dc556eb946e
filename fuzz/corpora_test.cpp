// That no kept input is forgotten.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "fuzz/target.h"

namespace fringix::fuzz {

namespace {

TEST(CorporaTest, EveryFolderIsThatOfATarget) {
  std::set<std::string> names{"exchange"};  // which fringix-tests run
  for (const Target& target : targets()) names.insert(target.name);
  for (const std::filesystem::directory_entry& folder : std::filesystem::directory_iterator(CORPORA)) {
    EXPECT_TRUE(names.contains(folder.path().filename().string())) << folder.path();
  }
}

}  // namespace

}  // namespace fringix::fuzz
