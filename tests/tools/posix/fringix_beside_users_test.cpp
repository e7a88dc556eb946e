// The built tool watching beside a program of another user that has the trigger port.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "../small_head.h"
#include "head/serving/head_server.h"
#include "support/child_process.h"

namespace fringix::test {
namespace {

constexpr const char* root = "0";
constexpr const char* anna = "41001";
constexpr const char* bruno = "41002";

struct Parties {
  const char* name;
  const char* victim;
  const char* holder;
  const char* told;  // of who has the port: only root sees into the processes of others
};

std::ostream& operator<<(std::ostream& out, const Parties& parties) { return out << parties.name; }

class FringixBesideUser : public testing::TestWithParam<Parties> {
 protected:
  FringixBesideUser() { server_.start(); }
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can start processes of other users";
  }

  static std::vector<std::string> watchAs(const char* user) {
    return {"--reuid", user, "--regid", user, "--clear-groups", FRINGIX_TOOL, "watch", "127.0.0.1"};
  }

  static constexpr const char* setUser = "/usr/bin/setpriv";
  head::HeadServer server_{smallHead()};
};

TEST_P(FringixBesideUser, SaysWhoHasThePortAndEnds) {
  ChildProcess holder(TRIGGER_USER, {GetParam().holder, "take-port"});
  ASSERT_NE(holder.waitForLine("ready"), "");
  ChildProcess tool(setUser, watchAs(GetParam().victim));
  const std::string line = tool.waitForLine("fringix: ");
  EXPECT_EQ(line.find(std::string("fringix: triggers cannot arrive: ") + GetParam().told), 0U) << line;
  EXPECT_TRUE(line.ends_with(std::string(" of user ") + GetParam().holder + " has UDP port 44331") ||
              line.ends_with(" of user root has UDP port 44331"))
      << line;
  EXPECT_EQ(tool.wait(), 1);
}

// A program of this library is one that passes triggers on, but to its own user's others only; root's to everybody.
TEST_P(FringixBesideUser, SharesThePortWithTheLibraryWhereItIsBelieved) {
  ChildProcess holder(setUser, watchAs(GetParam().holder));
  ASSERT_NE(holder.waitForLine("watching"), "");
  ChildProcess tool(setUser, watchAs(GetParam().victim));
  const bool believed = GetParam().holder == std::string(root) || GetParam().holder == std::string(GetParam().victim);
  const std::string line = tool.nextLine().value_or("nothing");
  EXPECT_EQ(line.find(believed ? "watching 1 head" : "fringix: triggers cannot arrive: "), 0U) << line;
  if (!believed) {
    EXPECT_EQ(tool.wait(), 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Users, FringixBesideUser,
                         testing::Values(Parties{"AUserBesideRoot", anna, root, "a program of user "},
                                         Parties{"RootBesideAUser", root, anna, "\"fringix-trigger\" (process "},
                                         Parties{"AUserBesideAnother", bruno, anna, "a program of user "},
                                         Parties{"AUserBesideItself", anna, anna, "\"fringix-trigger\" (process "}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace fringix::test
