#include "arguments/suggestion.h"

#include <gtest/gtest.h>

#include <vector>

namespace fringix::arguments {
namespace {

std::string meant(const std::string& word) {
  static const std::vector<std::string> known = {"list", "live", "info", "projector", "set"};
  return didYouMean(word, known);
}

TEST(Suggestion, NamesTheWordThatIsNear) {
  EXPECT_EQ(meant("lve"), ", did you mean \"live\"?") << "a letter left out";
  EXPECT_EQ(meant("infoo"), ", did you mean \"info\"?") << "one too many";
  EXPECT_EQ(meant("lisd"), ", did you mean \"list\"?") << "a wrong one";
  EXPECT_EQ(meant("ilst"), ", did you mean \"list\"?") << "two swapped";
  EXPECT_EQ(meant("porjectr"), ", did you mean \"projector\"?") << "two errors in a longer word";
}

TEST(Suggestion, NamesTheNearestOfSeveral) {
  const std::vector<std::string> known = {"gain-max", "gain-min", "gain"};
  EXPECT_EQ(didYouMean("gain-mn", known), ", did you mean \"gain-min\"?");
}

TEST(Suggestion, HasNoneForWordsThatAreFar) {
  for (const char* word : {"", "dance", "x", "st...", "liverpool"}) EXPECT_EQ(meant(word), "") << word;
  EXPECT_EQ(meant(std::string(100000, 'l')), "");
  EXPECT_EQ(didYouMean("live", {}), "");
}

}  // namespace
}  // namespace fringix::arguments
