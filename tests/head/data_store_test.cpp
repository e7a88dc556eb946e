#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "head/model/data_name.h"
#include "head/model/data_store.h"
#include "support/scratch_folder.h"

namespace fringix::head {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t capacity = 100;

SharedBlock blockOf(const DataStore& store, const std::string& name) {
  MemoryBudget enough(capacity);
  return store.load(name, enough).block;
}

TEST(DataNameTest, OrdinaryNames) {
  for (const char* name : {"a", "calib.bin", "my scan-2_b.v1.dat", "_x", "7", "CONSOLE", "com", "COM12", "lpt", "nul2"})
    EXPECT_TRUE(isDataName(name)) << name;
  EXPECT_TRUE(isDataName(std::string(64, 'x')));
}

TEST(DataNameTest, NoWayOutOfAFolder) {
  for (const char* name : {"", ".", "..", "../x", "..\\x", "a/b", "a\\b", "/etc/passwd", "\\\\host\\x", "C:", "C:x", "C:\\x", "a:stream",
                           "~", ".hidden", ".incoming", "FOLDER~1"})
    EXPECT_FALSE(isDataName(name)) << name;
}

TEST(DataNameTest, NoDevices) {
  for (const char* name : {"CON", "nul", "Aux", "prn", "COM1", "com9", "COM0", "LPT3", "nul.txt", "con.a.b", "COM1 .x", "aux  .bin"})
    EXPECT_FALSE(isDataName(name)) << name;
}

TEST(DataNameTest, NothingThatASystemWouldChangeOrMisread) {
  for (const char* name : {"a.", "a ", " a", "-rf", "a\n", "a*", "a?", "a|b", R"(a"b)", "a<b", "\xC3\xA4", "a\x7F"})
    EXPECT_FALSE(isDataName(name)) << name;
  EXPECT_FALSE(isDataName(std::string_view("a\0b", 3)));
  EXPECT_FALSE(isDataName(std::string(65, 'x')));
}

// The same rules for both places.
class DataStoreTest : public testing::TestWithParam<bool> {
 protected:
  std::unique_ptr<DataStore> makeStore() {
    HeadSettings settings;
    settings.dataMemory = capacity;
    if (GetParam()) settings.storage = (folder.path() / "blocks").string();
    return makeDataStore(settings);
  }

  Block loaded(const std::string& name) const {
    const SharedBlock block = blockOf(*store, name);
    return block != nullptr ? *block : Block{};
  }

  test::ScratchFolder folder;
  std::unique_ptr<DataStore> store = makeStore();
};

INSTANTIATE_TEST_SUITE_P(Places, DataStoreTest, testing::Bool(), [](const auto& place) { return place.param ? "Folder" : "Memory"; });

TEST_P(DataStoreTest, KeepsBlocksByName) {
  const Block bytes{0, 13, 10, 26, 255};
  EXPECT_EQ(store->save("a.bin", bytes), Status::ok);
  EXPECT_EQ(store->save("b.bin", {1}), Status::ok);
  EXPECT_EQ(loaded("a.bin"), bytes);
  EXPECT_EQ(loaded("b.bin"), Block{1});
  EXPECT_EQ(blockOf(*store, "c.bin"), nullptr);
}

TEST_P(DataStoreTest, ReplacesABlock) {
  EXPECT_EQ(store->save("a", Block(90, 1)), Status::ok);
  EXPECT_EQ(store->save("a", Block(95, 2)), Status::ok) << "the old one does not count";
  EXPECT_EQ(loaded("a"), Block(95, 2));
}

TEST_P(DataStoreTest, RefusesWhatDoesNotFitTogether) {
  EXPECT_EQ(store->save("a", Block(60)), Status::ok);
  EXPECT_EQ(store->save("b", Block(41)), Status::outOfMemory);
  EXPECT_EQ(blockOf(*store, "b"), nullptr);
  EXPECT_EQ(store->save("b", Block(40)), Status::ok);
  EXPECT_EQ(store->save("a", Block(61)), Status::outOfMemory);
  EXPECT_EQ(loaded("a"), Block(60)) << "the old one stays";
}

TEST_P(DataStoreTest, RefusesNamesThatAreNone) {
  EXPECT_EQ(store->save("../a", {1}), Status::badParameter);
  EXPECT_EQ(store->save("", {1}), Status::badParameter);
  EXPECT_EQ(blockOf(*store, "../a"), nullptr);
  EXPECT_EQ(store->save("a", {}), Status::badParameter) << "an empty block cannot be told from none";
}

TEST_P(DataStoreTest, LendsNoMoreThanTheBudgetHas) {
  store->save("a", Block(60));
  MemoryBudget budget(100);
  {
    const LentBlock first = store->load("a", budget);
    EXPECT_EQ(first.block->size(), 60U);
    const LentBlock second = store->load("a", budget);
    EXPECT_TRUE(second.noRoom);
    EXPECT_EQ(second.block, nullptr);
  }
  EXPECT_FALSE(store->load("a", budget).noRoom) << "what was lent is given back";
  EXPECT_FALSE(store->load("b", budget).noRoom) << "a block that does not exist needs no room";
}

TEST_P(DataStoreTest, HasABoundForNames) {
  HeadSettings settings;
  settings.storage = GetParam() ? (folder.path() / "many").string() : "";
  store = makeDataStore(settings);
  for (std::size_t i = 1; i < DataStore::mostBlocks; ++i) {
    const std::string name = std::to_string(i);
    if (GetParam()) {
      std::ofstream(folder.path() / "many" / name) << "!";  // saving looks through the folder each time
    } else {
      ASSERT_EQ(store->save(name, {1}), Status::ok);
    }
  }
  EXPECT_EQ(store->save("the last", {1}), Status::ok);
  EXPECT_EQ(store->save("one more", {1}), Status::outOfMemory);
  EXPECT_EQ(store->save("7", {1, 2}), Status::ok) << "it takes the place of an older one";
}

class FolderStoreTest : public testing::Test {
 protected:
  std::unique_ptr<DataStore> open() {
    HeadSettings settings;
    settings.dataMemory = capacity;
    settings.storage = blocks.string();
    return makeDataStore(settings);
  }

  static void write(const fs::path& file, const std::string& text) { std::ofstream(file, std::ios::binary) << text; }

  // Beside the lock's.
  std::size_t files() const {
    return static_cast<std::size_t>(
        std::count_if(fs::directory_iterator(blocks), {}, [](const fs::path& file) { return file.filename() != ".lock"; }));
  }

  test::ScratchFolder folder;
  const fs::path blocks = folder.path() / "deep" / "blocks";
};

TEST_F(FolderStoreTest, BlocksOutliveTheStore) {
  open()->save("a", {1, 2, 3});
  EXPECT_EQ(*blockOf(*open(), "a"), (Block{1, 2, 3}));
  EXPECT_EQ(fs::file_size(blocks / "a"), 3U);
  EXPECT_EQ(files(), 1U) << "and nothing else";
}

TEST_F(FolderStoreTest, FilesOfPeopleAreBlocks) {
  const auto store = open();
  write(blocks / "hello.txt", "hello");
  EXPECT_EQ(*blockOf(*store, "hello.txt"), (Block{'h', 'e', 'l', 'l', 'o'}));
  EXPECT_EQ(store->save("a", Block(96)), Status::outOfMemory) << "they count";
  write(blocks / "large", std::string(101, 'x'));
  EXPECT_EQ(blockOf(*store, "large"), nullptr);
}

TEST_F(FolderStoreTest, TouchesNothingOutside) {
  const auto store = open();
  write(folder.path() / "deep" / "secret", "secret");
  for (const char* name : {"../secret", "..\\secret", "deep/../../secret"}) {
    EXPECT_EQ(blockOf(*store, name), nullptr) << name;
    EXPECT_EQ(store->save(name, {1}), Status::badParameter) << name;
  }
  EXPECT_EQ(blockOf(*store, (folder.path() / "deep" / "secret").string()), nullptr);
  EXPECT_EQ(fs::file_size(folder.path() / "deep" / "secret"), 6U);
}

TEST_F(FolderStoreTest, FollowsNoLinks) {
  const auto store = open();
  write(folder.path() / "secret", "secret");
  std::error_code error;
  fs::create_symlink(folder.path() / "secret", blocks / "link", error);
  if (error) GTEST_SKIP() << "no links here: " << error.message();
  EXPECT_EQ(blockOf(*store, "link"), nullptr);
  EXPECT_EQ(store->save("link", {1}), Status::storageFailed) << "whoever made the link may still need it";
  EXPECT_EQ(fs::read_symlink(blocks / "link"), folder.path() / "secret");
  EXPECT_EQ(fs::file_size(folder.path() / "secret"), 6U);
}

TEST_F(FolderStoreTest, TellsThatTheFolderCannotBeWritten) {
  const auto store = open();
  fs::create_directories(blocks / "taken" / "by a folder");
  EXPECT_EQ(store->save("taken", {1}), Status::storageFailed);
  EXPECT_EQ(blockOf(*store, "taken"), nullptr);
  EXPECT_EQ(files(), 1U) << "no half of a block is left";
}

TEST_F(FolderStoreTest, TellsThatTheFolderHasGone) {
  const auto store = open();
  std::error_code inUse;
  fs::remove_all(blocks, inUse);
  if (inUse) GTEST_SKIP() << "a folder with an open file cannot be removed here: " << inUse.message();
  EXPECT_EQ(store->save("a", {1}), Status::storageFailed);
  EXPECT_EQ(blockOf(*store, "a"), nullptr);
}

TEST_F(FolderStoreTest, AFolderHasOneStoreAtATime) {
  auto first = open();
  try {
    open();
    FAIL() << "two stores share a folder";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("another head"), std::string::npos) << error.what();
    EXPECT_NE(std::string(error.what()).find(blocks.string()), std::string::npos) << error.what();
  }
  EXPECT_EQ(first->save("a", {1}), Status::ok) << "the first one goes on";
  first.reset();
  EXPECT_EQ(*blockOf(*open(), "a"), Block{1});
}

TEST_F(FolderStoreTest, AFolderThatCannotBeWrittenNeedsNoLock) {
  HeadSettings settings;
  settings.storage = "/sys";
  if (!fs::is_directory(settings.storage)) GTEST_SKIP() << "no folder here is closed to everybody";
  EXPECT_EQ(makeDataStore(settings)->save("a", {1}), Status::storageFailed);
}

TEST_F(FolderStoreTest, TouchesNoFileThatABlockCannotHave) {
  const auto store = open();
  write(blocks / ".incoming", "of somebody else");
  EXPECT_EQ(store->save("a", {1}), Status::ok);
  EXPECT_EQ(fs::file_size(blocks / ".incoming"), 16U);
  EXPECT_EQ(files(), 2U);
}

TEST_F(FolderStoreTest, SavingFromManyThreadsLeavesWholeBlocks) {
  const auto store = open();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&store] {
      for (int i = 0; i < 50; ++i) EXPECT_EQ(store->save("a", Block(90, 7)), Status::ok);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(*blockOf(*store, "a"), Block(90, 7));
  EXPECT_EQ(files(), 1U);
}

TEST_F(FolderStoreTest, AFolderThatCannotBeMadeIsAnError) {
  write(folder.path() / "deep", "a file is in its place");
  EXPECT_THROW(open(), std::runtime_error);
}

}  // namespace
}  // namespace fringix::head
