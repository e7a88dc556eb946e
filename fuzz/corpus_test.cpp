// The kept inputs of every target, and its seeds, once.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "files/files.h"
#include "fuzz/target.h"

namespace fringix::fuzz {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t longestInput = 1 << 16;

class CorpusTest : public testing::TestWithParam<Target> {};

// What does not hold ends the process, and says which.
TEST_P(CorpusTest, HoldsForEveryInput) {
  const auto& [name, run, seeds] = GetParam();
  run({});
  std::size_t inputs = 0;
  for (const fs::directory_entry& file : fs::directory_iterator(fs::path(CORPORA) / name)) {
    run(files::readFile(file.path().string(), longestInput));
    ++inputs;
  }
  for (const std::string& seed : seeds != nullptr ? seeds() : std::vector<std::string>()) {
    run({reinterpret_cast<const std::uint8_t*>(seed.data()), seed.size()});
    ++inputs;
  }
  EXPECT_GT(inputs, 0U) << "a target has inputs to begin with";
}

INSTANTIATE_TEST_SUITE_P(Targets, CorpusTest, testing::ValuesIn(targets()), [](const auto& test) { return test.param.name; });

}  // namespace

}  // namespace fringix::fuzz
