#include "files/files.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/scratch_folder.h"

namespace fringix::files {
namespace {

namespace fs = std::filesystem;
using test::namesIn;
using test::readBytes;
using test::ScratchFolder;
using test::writeBytes;

constexpr std::uint64_t anySize = std::uint64_t{1} << 40;

template <typename Call>
std::string complaint(Call call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing was thrown";
}

std::string complaintAboutWriting(const fs::path& path) {
  const std::string whenAsked = complaint([&] { requireWritable(path.string()); });
  const std::string whenDone = complaint([&] { writeFile(path.string(), std::vector<std::uint8_t>{'n', 'e', 'w'}); });
  EXPECT_EQ(whenAsked, whenDone);
  return whenAsked;
}

std::string complaintAboutReading(const fs::path& path, std::uint64_t limit = anySize) {
  return complaint([&] { readFile(path.string(), limit); });
}

void write(const fs::path& path, const std::string& text) { writeFile(path.string(), std::vector<std::uint8_t>(text.begin(), text.end())); }

TEST(NumberedPath, NumbersHaveTheDigitsOfTheLastOne) {
  EXPECT_EQ(numberedPath("live.png", 7, 9), "live-7.png");
  EXPECT_EQ(numberedPath("live.png", 0, 0), "live-0.png");
  EXPECT_EQ(numberedPath("live.png", 7, 10), "live-07.png");
  EXPECT_EQ(numberedPath("live.png", 100, 100), "live-100.png");
}

TEST(NumberedPath, OnlyTheFileNameHasAnExtension) {
  EXPECT_EQ(numberedPath("run.1/live", 2, 3), "run.1/live-2");
  EXPECT_EQ(numberedPath("run.1\\live", 2, 3), "run.1\\live-2");
  EXPECT_EQ(numberedPath("run.1/live.a.png", 2, 3), "run.1/live.a-2.png");
  EXPECT_EQ(numberedPath(".live", 2, 3), ".live-2");
}

TEST(RequireWritable, LeavesNoFileBehind) {
  const ScratchFolder scratch;
  requireWritable((scratch / "new.png").string());
  EXPECT_EQ(namesIn(scratch.path()), std::vector<std::string>());
}

TEST(RequireWritable, LeavesAnExistingFileAsItIs) {
  const ScratchFolder scratch;
  writeBytes(scratch / "old.png", "old");
  requireWritable((scratch / "old.png").string());
  EXPECT_EQ(readBytes(scratch / "old.png"), "old");
  EXPECT_EQ(namesIn(scratch.path()), std::vector<std::string>{"old.png"});
}

TEST(Unwritable, FileAndReasonAreNamed) {
  const ScratchFolder scratch;
  const fs::path path = scratch / "missing" / "live.png";
  EXPECT_EQ(complaintAboutWriting(path), "cannot write \"" + path.string() + "\": No such file or directory");
}

TEST(Unwritable, FolderIsNoFile) {
  const ScratchFolder scratch;
  fs::create_directory(scratch / "folder");
  EXPECT_EQ(complaintAboutWriting(scratch / "folder"), "cannot write \"" + (scratch / "folder").string() + "\": it is no regular file");
  EXPECT_EQ(complaintAboutWriting(scratch / "").find("cannot write "), 0U);
  EXPECT_EQ(namesIn(scratch.path()), std::vector<std::string>{"folder"});
}

TEST(Unwritable, LinkIsNeitherFollowedNorReplaced) {
  const ScratchFolder scratch;
  writeBytes(scratch / "victim", "old");
  for (const char* target : {"victim", "missing"}) {
    std::error_code error;
    fs::create_symlink(scratch / target, scratch / "link", error);
    if (error) GTEST_SKIP() << "no links here: " << error.message();
    EXPECT_EQ(complaintAboutWriting(scratch / "link"),
              "cannot write \"" + (scratch / "link").string() + "\": it is a link; name the file that it leads to");
    EXPECT_EQ(fs::read_symlink(scratch / "link"), scratch / target);
    fs::remove(scratch / "link");
  }
  EXPECT_EQ(readBytes(scratch / "victim"), "old");
  EXPECT_EQ(namesIn(scratch.path()), std::vector<std::string>{"victim"});
}

TEST(WriteFile, ReplacesWhatWasThere) {
  const ScratchFolder scratch;
  write(scratch / "file", "long");
  write(scratch / "file", "\r\n");
  EXPECT_EQ(readBytes(scratch / "file"), "\r\n");
  EXPECT_EQ(namesIn(scratch.path()), std::vector<std::string>{"file"});
}

TEST(WriteFile, NoBytesAreAFile) {
  const ScratchFolder scratch;
  write(scratch / "file", "");
  EXPECT_EQ(readBytes(scratch / "file"), "");
}

TEST(WriteFile, TakesAFileNameWithoutAFolder) {
  const ScratchFolder scratch;
  const fs::path before = fs::current_path();
  fs::current_path(scratch.path());
  requireWritable("file");
  write("file", "here");
  fs::current_path(before);
  EXPECT_EQ(readBytes(scratch / "file"), "here");
}

TEST(WriteFile, AnotherNameOfTheOldFileKeepsWhatItHad) {
  const ScratchFolder scratch;
  writeBytes(scratch / "file", "old");
  std::error_code error;
  fs::create_hard_link(scratch / "file", scratch / "other", error);
  if (error) GTEST_SKIP() << "a file has one name only here: " << error.message();
  write(scratch / "file", "new");
  EXPECT_EQ(readBytes(scratch / "file"), "new");
  EXPECT_EQ(readBytes(scratch / "other"), "old") << "the old file itself is never written to";
}

TEST(ReadFile, GivesEveryByteOfALargeFile) {
  const ScratchFolder scratch;
  const std::string path = (scratch / "large").string();
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1} << 20, (std::size_t{2} << 20) + 1}) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    writeFile(path, bytes);
    EXPECT_TRUE(readFile(path, size) == bytes) << size;
  }
}

TEST(ReadFile, NamesFileAndReason) {
  const ScratchFolder scratch;
  EXPECT_EQ(complaintAboutReading(scratch / "missing"),
            "cannot read \"" + (scratch / "missing").string() + "\": No such file or directory");
}

TEST(ReadFile, RefusesAFileAboveTheLimit) {
  const ScratchFolder scratch;
  writeBytes(scratch / "file", "12345");
  EXPECT_EQ(complaintAboutReading(scratch / "file", 5), "nothing was thrown");
  EXPECT_EQ(complaintAboutReading(scratch / "file", 4),
            "cannot read \"" + (scratch / "file").string() + "\": it has 5 bytes, and at most 4 are taken");
}

TEST(ReadFile, AHugeFileIsRefusedUnread) {
  const ScratchFolder scratch;
  writeBytes(scratch / "huge", "");
  fs::resize_file(scratch / "huge", std::uintmax_t{3} << 30);  // without a byte on the disk
  EXPECT_EQ(complaintAboutReading(scratch / "huge", std::uint64_t{1} << 30),
            "cannot read \"" + (scratch / "huge").string() + "\": it has 3221225472 bytes, and at most 1073741824 are taken");
}

TEST(ReadFile, FolderIsNoFile) {
  const ScratchFolder scratch;
  EXPECT_EQ(complaintAboutReading(scratch.path()).find("cannot read \"" + scratch.path().string() + "\": "), 0U);
}

TEST(SameFile, IsKnownByAnyOfItsNames) {
  const ScratchFolder scratch;
  writeBytes(scratch / "file", "");
  writeBytes(scratch / "other", "");
  EXPECT_TRUE(isSameFile((scratch / "file").string(), (scratch.path() / "." / "file").string()));
  EXPECT_FALSE(isSameFile((scratch / "file").string(), (scratch / "other").string()));
  EXPECT_FALSE(isSameFile((scratch / "missing").string(), (scratch / "missing").string()));
}

}  // namespace
}  // namespace fringix::files
