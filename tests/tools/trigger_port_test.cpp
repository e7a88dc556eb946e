// Who has the trigger port, with listeners of this process and of others.
#include "heads/trigger_port.h"

#include <gtest/gtest.h>

#include <fringix/fringix.hpp>

#include "head/serving/head_server.h"
#include "platform/socket.h"
#include "small_head.h"
#include "support/child_process.h"
#include "support/eventually.h"

namespace fringix::tool {
namespace {

using namespace std::chrono_literals;

const PortHolder own{1, "fringix", "me", true};
const PortHolder stranger{4242, "nc", "alice", false};

TEST(TriggerPort, IsFineWhenOneThatPassesTriggersOnHasIt) {
  EXPECT_TRUE(triggersArrive({own}));
  EXPECT_FALSE(triggersArrive({}));
  EXPECT_FALSE(triggersArrive({stranger}));
  EXPECT_FALSE(triggersArrive({own, stranger}));
}

TEST(TriggerPort, StrangersAreNamed) {
  EXPECT_EQ(explainHolders({own, stranger}).what, "triggers cannot arrive: \"nc\" (process 4242) of user alice has UDP port 44331");
  EXPECT_EQ(explainHolders({{0, "", "root", false}}).what, "triggers cannot arrive: a program of user root has UDP port 44331");
  EXPECT_EQ(explainHolders({{7, "nc.exe", "", false}, stranger}).what,
            "triggers cannot arrive: \"nc.exe\" (process 7) and \"nc\" (process 4242) of user alice has UDP port 44331");
  EXPECT_EQ(explainHolders({}).what, "triggers cannot arrive: UDP port 44331 could not be opened on this machine");
}

class TriggerPortOfThisMachine : public testing::Test {
 protected:
  TriggerPortOfThisMachine() { server_.start(); }

  head::HeadServer server_{test::smallHead()};
};

TEST_F(TriggerPortOfThisMachine, IsTheListenersOfThisProcess) {
  const Device head("127.0.0.1");
  EXPECT_NO_THROW(requireTriggers(true, 20s));
  const auto holders = triggerPortHolders();
  ASSERT_TRUE(holders);
  ASSERT_EQ(holders->size(), 1U);
  if (holders->front().process == 0) GTEST_SKIP() << "the system does not tell whose it is";
  EXPECT_NE(holders->front().program.find("fringix-tool-te"), std::string::npos) << holders->front().program;
}

TEST_F(TriggerPortOfThisMachine, IsTheListenersOfAnotherProcess) {
  test::ChildProcess other(FRINGIX_TOOL, {"watch", "127.0.0.1"});
  ASSERT_NE(other.waitForLine("watching"), "");
  ASSERT_TRUE(test::eventually([] { return !triggerPortHolders()->empty(); }));
  const Device head("127.0.0.1");
  EXPECT_NO_THROW(requireTriggers(true, 20s));
  const auto holders = triggerPortHolders();
  ASSERT_EQ(holders->size(), 1U);
  if (holders->front().process == 0) GTEST_SKIP() << "the system does not tell whose it is";
  EXPECT_NE(holders->front().program.find("fringix"), std::string::npos) << holders->front().program;
  EXPECT_EQ(holders->front().program.find("tests"), std::string::npos) << holders->front().program;
}

}  // namespace
}  // namespace fringix::tool
