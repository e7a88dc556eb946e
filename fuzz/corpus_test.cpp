// The kept inputs of every target, and its seeds, once.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "files/files.h"
#include "fuzz/target.h"

namespace fringix::fuzz {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t longestInput = 1 << 16;

// A target that is content with its seeds has no folder.
std::vector<fs::path> keptInputs(const std::string& target) {
  const fs::path folder = fs::path(CORPORA) / target;
  if (!fs::exists(folder)) return {};
  return {fs::directory_iterator(folder), fs::directory_iterator()};
}

class CorpusTest : public testing::TestWithParam<Target> {};

// What does not hold ends the process, and says which.
TEST_P(CorpusTest, HoldsForEveryInput) {
  const auto& [name, run, seeds] = GetParam();
  run({});
  std::size_t inputs = 0;
  for (const fs::path& file : keptInputs(name)) {
    run(files::readFile(file.string(), longestInput));
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
