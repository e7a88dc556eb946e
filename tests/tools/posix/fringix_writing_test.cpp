// Every command that writes something, or has a simulated head write it: on a full disk, and ended by Ctrl-C. What was there before
// stays as it was until something whole takes its place, and nothing else is left.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include "../program.h"
#include "png/png_decoder.h"
#include "support/child_process.h"
#include "support/json.h"
#include "support/posix/small_disk.h"

namespace fringix::test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Names = std::vector<std::string>;

struct Row {
  const char* command;  // the words behind "fringix"
  Names writes;
  int exitOnFullDisk;
  std::string toldOnFullDisk;  // how the text on standard error begins
};

std::string noSpaceFor(const std::string& file) { return "fringix: cannot write \"" + file + "\": No space left on device\n"; }

Names pictures(int first, int last) {
  Names names;
  for (int i = first; i <= last; ++i) names.push_back("made/a-" + std::string(last > 9 && i < 10 ? "0" : "") + std::to_string(i) + ".png");
  return names;
}

const Names scanFiles{"made/cloud.ply",         "made/cloud.pcd", "made/range.npy",   "made/depth.png",
                      "made/depth-preview.png", "made/scan.json", "made/report.html", "made/raw-00.png"};

const std::vector<Row> rows{
    {"live 127.0.0.1 -o made/a.png", {"made/a.png"}, 1, noSpaceFor("made/a.png")},
    {"live 127.0.0.1 -n 99 -o made/a.png", pictures(1, 99), 1, noSpaceFor("made/a-01.png")},
    {"picture 127.0.0.1 1 -o made/a.png", {"made/a.png"}, 1, noSpaceFor("made/a.png")},
    {"picture 127.0.0.1 0 -n 20 -o made/a.png", pictures(0, 19), 1, noSpaceFor("made/a-00.png")},
    {"data load 127.0.0.1 kept -o made/a", {"made/a"}, 1, noSpaceFor("made/a")},
    {"data save 127.0.0.1 block inputs/block", {"blocks/block"}, 1, "fringix: the head at 127.0.0.1 could not store the block"},
    {"sheet inputs/live.png inputs/live.png -o made/a.png", {"made/a.png"}, 1, noSpaceFor("made/a.png")},
    {"pattern upload 127.0.0.1 1 inputs/pattern.png inputs/pattern.png", {"patterns/4711-1-000.png", "patterns/4711-1-001.png"}, 0, ""},
    {"scan 127.0.0.1 -o made", scanFiles, 1, noSpaceFor("made/cloud.ply")},
    {"scan --from inputs --raw -o made", scanFiles, 1, noSpaceFor("made/raw-00.png")},
    {"measure 127.0.0.1 1", {}, 0, ""},
    {"ini write 127.0.0.1 Camera Gain 5", {}, 0, ""},
};

// The current folder while it lives. A head keeps its blocks and the patterns that it gets there; it has a sequence, number 1, of which
// pictures were taken, and a block "kept".
class Workplace {
 public:
  explicit Workplace(const fs::path& folder) : before_(fs::current_path()) {
    fs::current_path(folder);
    for (const char* name : {"inputs", "made", "patterns"}) fs::create_directory(name);
    head_ = std::make_unique<ChildProcess>(FRINGIX_HEAD, wordsOf("--address 127.0.0.1 --serial 4711 --camera 160x128 --projector 320x200 "
                                                                 "--image-time 0 --storage blocks --patterns patterns"));
    EXPECT_NE(head_->waitForLine("ready:"), "");
    makeInputs();
  }
  ~Workplace() { fs::current_path(before_); }

  static std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
  }

  static void putOldFiles(const Row& row) {
    for (const char* folder : {"made", "patterns"}) {
      fs::remove_all(folder);
      fs::create_directory(folder);
    }
    for (const std::string& file : row.writes) writeBytes(file, "old");
  }

  // Of each file, by its name.
  static std::map<std::string, std::string> content() {
    std::map<std::string, std::string> content;
    for (const auto& entry : fs::recursive_directory_iterator(".")) {
      if (entry.is_regular_file()) content[fs::relative(entry.path(), ".").string()] = readBytes(entry.path());
    }
    return content;
  }

  ChildProcess& head() const { return *head_; }

 private:
  static void makeInputs() {
    writeBytes("inputs/block", std::string(1 << 20, 'x'));
    for (const char* command : {"data save 127.0.0.1 kept inputs/block", "pattern alloc 127.0.0.1 20", "pattern phase 127.0.0.1 1 0 20 0 0",
                                "measure 127.0.0.1 1", "live 127.0.0.1 -o inputs/live.png", "scan 127.0.0.1 --raw -o inputs"}) {
      const Outcome outcome = runProgram(FRINGIX_TOOL, command);
      ASSERT_EQ(outcome.exitCode, 0) << command << outcome.errors;
    }
    fs::copy("patterns/4711-1-000.png", "inputs/pattern.png");
  }

  fs::path before_;
  std::unique_ptr<ChildProcess> head_;
};

// Takes what a disk has left while it lives.
class Filling {
 public:
  Filling() {
    std::ofstream file("filling", std::ios::binary);
    while (file << std::string(4096, 'f') << std::flush) {
    }
  }
  ~Filling() { fs::remove("filling"); }
};

TEST(FringixOnFullDisk, EveryCommandLeavesEverythingAsItWas) {
  const SmallDisk disk("32m");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  const Workplace workplace(disk.path());
  for (const Row& row : rows) {
    Workplace::putOldFiles(row);
    const Filling filling;
    const auto before = Workplace::content();
    const Outcome outcome = runProgram(FRINGIX_TOOL, row.command);
    EXPECT_EQ(outcome.exitCode, row.exitOnFullDisk) << row.command << outcome.errors;
    EXPECT_EQ(outcome.errors.substr(0, row.toldOnFullDisk.size()), row.toldOnFullDisk) << row.command;
    EXPECT_EQ(outcome.errors.empty(), row.toldOnFullDisk.empty()) << row.command << outcome.errors;
    EXPECT_TRUE(Workplace::content() == before) << row.command;
  }
  EXPECT_EQ(workplace.head().nextLine(), "fringix-head: cannot write \"patterns/4711-1-000.png\": No space left on device");
}

TEST(FringixOnFullDisk, SeriesEndsWithThePictureThatHasNoRoom) {
  const SmallDisk disk("32m");
  if (!disk.usable()) GTEST_SKIP() << "nothing may be mounted here";
  const Workplace workplace(disk.path());
  const Outcome outcome = runProgram(FRINGIX_TOOL, "live 127.0.0.1 -n 99999 -o made/a.png");
  EXPECT_EQ(outcome.exitCode, 1);
  const Names names = namesIn("made");
  char next[32];
  std::snprintf(next, sizeof next, "made/a-%05zu.png", names.size() + 1);
  EXPECT_EQ(outcome.errors, noSpaceFor(next));
  for (const std::string& name : names) EXPECT_EQ(decodePng(readBytes("made/" + name)).width, 160U) << name;
}

using Content = std::map<std::string, std::string>;

// Points are few or many, as the noise wants it; each has 35 bytes.
bool isWholePly(const std::string& bytes) {
  const std::string count = "element vertex ";
  const std::string end = "end_header\n";
  const std::size_t points = std::stoul(bytes.substr(bytes.find(count) + count.size()));
  return bytes.size() == bytes.find(end) + end.size() + 35 * points;
}

// By the structure or the end that its kind has, or the size that it had when nothing was interrupted.
bool isWhole(const std::string& name, const std::string& bytes, const Content& complete) {
  if (name.ends_with(".png")) return decodePng(bytes).height > 0;
  if (name.ends_with(".json")) return Json(bytes).size() > 0;
  if (name.ends_with(".html")) return bytes.ends_with("</html>\n");
  if (name.ends_with(".ply")) return isWholePly(bytes);
  return complete.contains(name) && bytes.size() == complete.at(name).size();
}

bool mayWrite(const Row& row, const std::string& name, const Content& complete) {
  const bool isPatternOfAScan = name.starts_with("patterns/4711-");  // each has a sequence of its own
  return isPatternOfAScan || complete.contains(name) || std::find(row.writes.begin(), row.writes.end(), name) != row.writes.end();
}

void expectOldOrWhole(const Row& row, const Content& before, const Content& complete) {
  for (const auto& [name, bytes] : Workplace::content()) {
    const auto old = before.find(name);
    if (old != before.end() && old->second == bytes) continue;
    EXPECT_TRUE(mayWrite(row, name, complete) && isWhole(name, bytes, complete)) << row.command << " leaves " << name;
  }
}

// Ended at several moments of the time that it takes; one that has ended by itself by then is no failure.
TEST(FringixInterrupted, EveryCommandLeavesOldOrWholeFiles) {
  constexpr int moments = 6;
  const ScratchFolder scratch;
  const Workplace workplace(scratch.path());
  for (const Row& row : rows) {
    Workplace::putOldFiles(row);
    const auto start = Clock::now();
    ASSERT_EQ(runProgram(FRINGIX_TOOL, row.command).exitCode, 0) << row.command;
    const auto time = Clock::now() - start;
    const auto complete = Workplace::content();
    int ended = 0;
    for (int moment = 0; moment < moments; ++moment) {
      Workplace::putOldFiles(row);
      const auto before = Workplace::content();
      ChildProcess tool(FRINGIX_TOOL, Workplace::wordsOf(row.command));
      std::this_thread::sleep_for(time * moment / moments);
      ASSERT_TRUE(tool.interrupt());
      const std::optional<int> exitCode = tool.wait();
      const bool isScan = std::string_view(row.command).starts_with("scan");
      EXPECT_TRUE(!exitCode || *exitCode == 0 || (isScan && *exitCode == 1)) << row.command << *exitCode;
      ended += exitCode == 0 ? 0 : 1;
      expectOldOrWhole(row, before, complete);
    }
    EXPECT_EQ(runProgram(FRINGIX_TOOL, "get 127.0.0.1 gain").exitCode, 0) << "the head serves on after " << row.command;
    EXPECT_GT(ended, 0) << row.command;
  }
}

// So large that most of the time goes into its file.
TEST(FringixInterrupted, BlockThatIsOnItsWay) {
  const ScratchFolder scratch;
  const Workplace workplace(scratch.path());
  writeBytes("inputs/large", std::string(64 << 20, 'x'));
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "data save 127.0.0.1 large inputs/large").exitCode, 0);
  const auto start = Clock::now();
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "data load 127.0.0.1 large -o made/a").exitCode, 0);
  const auto time = Clock::now() - start;
  for (int moment = 0; moment < 20; ++moment) {
    writeBytes("made/a", "old");
    ChildProcess tool(FRINGIX_TOOL, Workplace::wordsOf("data load 127.0.0.1 large -o made/a"));
    std::this_thread::sleep_for(time * moment / 20);
    ASSERT_TRUE(tool.interrupt());
    tool.wait();
    const std::string bytes = readBytes("made/a");
    EXPECT_TRUE(bytes == "old" || bytes.size() == std::size_t{64} << 20) << bytes.size();
    EXPECT_EQ(namesIn("made"), Names{"a"});
  }
}

// While the tool sends it one thing after the other.
TEST(FringixInterrupted, HeadLeavesOldOrWholeFiles) {
  for (const Row& row : rows) {
    if (row.writes.empty() || row.writes.front().starts_with("made")) continue;
    const ScratchFolder scratch;
    const Workplace workplace(scratch.path());
    Workplace::putOldFiles(row);
    const auto before = Workplace::content();
    ASSERT_EQ(runProgram(FRINGIX_TOOL, row.command).exitCode, 0);
    const auto complete = Workplace::content();
    std::atomic<bool> over = false;
    std::thread sender([&] {
      while (!over) runProgram(FRINGIX_TOOL, row.command);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_TRUE(workplace.head().interrupt());
    EXPECT_EQ(workplace.head().wait(), 0);
    over = true;
    sender.join();
    expectOldOrWhole(row, before, complete);
  }
}

}  // namespace
}  // namespace fringix::test
