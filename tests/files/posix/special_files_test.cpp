// What only file systems of this kind have: pipes and devices with names, modes, and small disks.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "files/files.h"
#include "files/native_file.h"
#include "support/posix/small_disk.h"

namespace fringix::files {
namespace {

namespace fs = std::filesystem;
using test::namesIn;
using test::readBytes;
using test::ScratchFolder;
using test::SmallDisk;
using test::writeBytes;
using Names = std::vector<std::string>;

template <typename Call>
std::string complaint(Call call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing was thrown";
}

const std::vector<std::uint8_t> large(1 << 20, 'x');

TEST(SpecialFiles, AreRefusedWithoutWaiting) {
  const ScratchFolder scratch;
  const std::string pipe = (scratch / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {std::string("/dev/zero"), pipe, scratch.path().string()}) {
    EXPECT_EQ(complaint([&] { readFile(path, 1 << 20); }), "cannot read \"" + path + "\": it is no regular file");
    EXPECT_EQ(complaint([&] { requireWritable(path); }), "cannot write \"" + path + "\": it is no regular file");
    EXPECT_EQ(complaint([&] { writeFile(path, large); }), "cannot write \"" + path + "\": it is no regular file");
  }
  EXPECT_EQ(namesIn(scratch.path()), Names{"pipe"});
}

TEST(SpecialFiles, FileWithoutASizeIsReadToItsEnd) {
  EXPECT_GT(readFile("/proc/self/status", 1 << 20).size(), 100U);
  EXPECT_NE(complaint([&] { readFile("/proc/self/status", 100); }), "nothing was thrown");
}

TEST(SpecialFiles, ReplacedFileKeepsItsMode) {
  const ScratchFolder scratch;
  writeBytes(scratch / "file", "secret");
  ASSERT_EQ(chmod((scratch / "file").c_str(), 0600), 0);
  writeFile((scratch / "file").string(), large);
  EXPECT_EQ(fs::status(scratch / "file").permissions(), fs::perms(0600));
}

TEST(SpecialFiles, NewFileHasTheModeOfTheUser) {
  const ScratchFolder scratch;
  const mode_t before = umask(027);
  writeFile((scratch / "file").string(), large);
  umask(before);
  EXPECT_EQ(fs::status(scratch / "file").permissions(), fs::perms(0640));
}

// Nothing stops root, so that one is somebody else for a while.
TEST(SpecialFiles, WriteProtectedFileStaysAsItIs) {
  constexpr uid_t nobody = 65534;
  const ScratchFolder scratch;
  const std::string path = (scratch / "file").string();
  writeBytes(path, "old");
  ASSERT_EQ(chmod(scratch.path().c_str(), 0777), 0);
  const uid_t user = geteuid();
  ASSERT_TRUE(user != 0 || seteuid(nobody) == 0);
  ASSERT_TRUE(user == 0 || chmod(path.c_str(), 0400) == 0);
  const std::string told = complaint([&] { requireWritable(path); });
  const std::string toldLater = complaint([&] { writeFile(path, large); });
  ASSERT_EQ(seteuid(user), 0);
  EXPECT_EQ(told, "cannot write \"" + path + "\": it is write-protected");
  EXPECT_EQ(toldLater, told);
  EXPECT_EQ(readBytes(path), "old");
}

TEST(FullDisk, LeavesTheOldFileAndNothingElse) {
  const SmallDisk disk("64k");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  writeBytes(disk / "file", "old");
  const std::string path = (disk / "file").string();
  EXPECT_EQ(complaint([&] { writeFile(path, large); }), "cannot write \"" + path + "\": No space left on device");
  EXPECT_EQ(readBytes(disk / "file"), "old");
  EXPECT_EQ(namesIn(disk.path()), Names{"file"});
  writeFile(path, std::vector<std::uint8_t>(40000, 'y'));
  EXPECT_EQ(readBytes(disk / "file"), std::string(40000, 'y')) << "the room is free again";
}

TEST(FullDisk, WithoutRoomForAName) {
  const SmallDisk disk("64k,nr_inodes=3");  // the folder, the old file, a new one
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  writeBytes(disk / "file", "old");
  writeBytes(disk / "other", "");
  const std::string path = (disk / "file").string();
  EXPECT_EQ(complaint([&] { requireWritable(path); }), "cannot write \"" + path + "\": No space left on device");
  EXPECT_EQ(complaint([&] { writeFile(path, large); }), "cannot write \"" + path + "\": No space left on device");
  EXPECT_EQ(readBytes(disk / "file"), "old");
}

TEST(KilledWriter, LeavesTheOldFileAndNothingElse) {
  const ScratchFolder scratch;
  writeBytes(scratch / "file", "old");
  const pid_t writer = fork();
  if (writer == 0) {
    NewFile file(scratch.path());
    file.write(large);
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(writer, &status, 0), writer);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(readBytes(scratch / "file"), "old");
  EXPECT_EQ(namesIn(scratch.path()), Names{"file"});
}

TEST(KilledWriter, FileIsWholeAtEveryMoment) {
  const ScratchFolder scratch;
  const std::string path = (scratch / "file").string();
  writeFile(path, large);
  const pid_t writer = fork();
  for (std::uint8_t i = 0; writer == 0; ++i) writeFile(path, std::vector<std::uint8_t>(large.size(), i));
  for (int i = 0; i < 50; ++i) {
    const std::string bytes = readBytes(path);
    EXPECT_EQ(bytes, std::string(large.size(), bytes.front()));
  }
  kill(writer, SIGKILL);
  waitpid(writer, nullptr, 0);
  EXPECT_EQ(readBytes(path).size(), large.size());
}

// Between two small files it often has one that has a name, but not yet its place.
TEST(KilledWriter, LeavesNothingElseWhenItIsAskedToEnd) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (int i = 0; i < 50; ++i) {
      const ScratchFolder scratch;
      const pid_t writer = fork();
      while (writer == 0) writeFile((scratch / "file").string(), std::vector<std::uint8_t>{'x'});
      while (!fs::exists(scratch / "file")) std::this_thread::yield();
      kill(writer, signal);
      waitpid(writer, nullptr, 0);
      EXPECT_EQ(namesIn(scratch.path()), Names{"file"}) << signal;
    }
  }
}

}  // namespace
}  // namespace fringix::files
