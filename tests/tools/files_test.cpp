#include "files/files.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "program.h"

namespace fringix::tool {
namespace {

std::string complaint(const std::string& path) {
  try {
    files::requireWritable(path);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "writable";
}

TEST(NumberedPath, NumbersHaveTheDigitsOfTheLastOne) {
  EXPECT_EQ(files::numberedPath("live.png", 7, 9), "live-7.png");
  EXPECT_EQ(files::numberedPath("live.png", 0, 0), "live-0.png");
  EXPECT_EQ(files::numberedPath("live.png", 7, 10), "live-07.png");
  EXPECT_EQ(files::numberedPath("live.png", 100, 100), "live-100.png");
}

TEST(NumberedPath, OnlyTheFileNameHasAnExtension) {
  EXPECT_EQ(files::numberedPath("run.1/live", 2, 3), "run.1/live-2");
  EXPECT_EQ(files::numberedPath("run.1\\live", 2, 3), "run.1\\live-2");
  EXPECT_EQ(files::numberedPath("run.1/live.a.png", 2, 3), "run.1/live.a-2.png");
  EXPECT_EQ(files::numberedPath(".live", 2, 3), ".live-2");
}

TEST(RequireWritable, LeavesNoFileBehind) {
  const test::ScratchFolder scratch;
  EXPECT_EQ(complaint((scratch / "new.png").string()), "writable");
  EXPECT_FALSE(std::filesystem::exists(scratch / "new.png"));
}

TEST(RequireWritable, LeavesAnExistingFileAsItIs) {
  const test::ScratchFolder scratch;
  files::writeFile((scratch / "old.png").string(), {'o', 'l', 'd'});
  EXPECT_EQ(complaint((scratch / "old.png").string()), "writable");
  EXPECT_EQ(test::readBytes(scratch / "old.png"), "old");
}

TEST(RequireWritable, NamesFileAndReason) {
  const test::ScratchFolder scratch;
  const std::string path = (scratch / "missing" / "live.png").string();
  EXPECT_EQ(complaint(path), "cannot write \"" + path + "\": No such file or directory");
}

TEST(RequireWritable, FolderIsNoFile) {
  const test::ScratchFolder scratch;
  const std::string folder = (scratch / "").string();
  EXPECT_EQ(complaint(folder).find("cannot write \"" + folder + "\": "), 0U);
}

TEST(ReadFile, GivesEveryByteOfALargeFile) {
  const test::ScratchFolder scratch;
  const std::string path = (scratch / "large").string();
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1} << 20, (std::size_t{2} << 20) + 1}) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    files::writeFile(path, bytes);
    EXPECT_TRUE(files::readFile(path) == bytes) << size;
  }
}

TEST(ReadFile, NamesFileAndReason) {
  const test::ScratchFolder scratch;
  const std::string path = (scratch / "missing").string();
  try {
    files::readFile(path);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), "cannot read \"" + path + "\": No such file or directory");
  }
}

TEST(WriteFile, ReplacesWhatWasThere) {
  const test::ScratchFolder scratch;
  const std::string path = (scratch / "file").string();
  files::writeFile(path, {'l', 'o', 'n', 'g'});
  files::writeFile(path, {'\r', '\n'});
  EXPECT_EQ(test::readBytes(path), "\r\n");
}

}  // namespace
}  // namespace fringix::tool
