// Listeners beside processes of other users of the host: hostile ones, and ones that listen, too. What a victim hears, what it says in its
// trace, what it spends.
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "support/child_process.h"
#include "support/eventually.h"
#include "triggers/listener_process.h"
#include "triggers/trigger_source.h"

namespace fringix::test {
namespace {

using std::chrono::milliseconds;
using Listener = std::unique_ptr<ListenerProcess>;

constexpr unsigned root = 0;
constexpr unsigned anna = 41001;
constexpr unsigned bruno = 41002;

constexpr const char* aloneLine =
    "GPIOThread: another program or user has the name of the listeners, no triggers for other sessions until it is free";
constexpr const char* noPortLine = "GPIOThread: another program or user has UDP port 44331, no triggers until it is free";

// A trigger source beside which processes of several users run.
class UsersTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != root) GTEST_SKIP() << "only root can start processes of other users";
  }

  Listener listen(unsigned user) const {
    return std::make_unique<ListenerProcess>(TRIGGER_USER, std::vector<std::string>{std::to_string(user), "listen", source_.address()});
  }

  static bool hears(ListenerProcess& listener, int triggers = 3) {
    return listener.hears(triggers, std::chrono::steady_clock::now()).has_value();
  }

  static bool says(ListenerProcess& listener, const char* line) {
    return eventually([&] { return listener.traced(line) > 0; });
  }

  // SLDevFree waits 2 seconds for a listener that does not end.
  static bool closesAtOnce(ListenerProcess& listener) {
    const auto start = std::chrono::steady_clock::now();
    return listener.close() && std::chrono::steady_clock::now() - start < milliseconds(1500);
  }

  TriggerSource source_{milliseconds(5)};
};

struct Parties {
  const char* name;
  unsigned victim;
  unsigned stranger;
};

std::ostream& operator<<(std::ostream& out, const Parties& parties) { return out << parties.name; }

class HostileUserTest : public UsersTest, public testing::WithParamInterface<Parties> {
 protected:
  Listener victim() const { return listen(GetParam().victim); }
  std::unique_ptr<ChildProcess> stranger(const std::string& attack) const { return process(GetParam().stranger, attack); }
  static std::unique_ptr<ChildProcess> process(unsigned user, const std::string& attack) {
    return std::make_unique<ChildProcess>(TRIGGER_USER, std::vector<std::string>{std::to_string(user), attack});
  }
};

// What not even root may do, though its word is believed.
class HostileProcessTest : public HostileUserTest {};

TEST_P(HostileUserTest, ForgesNothing) {
  const auto hostile = stranger("forge");
  ASSERT_NE(hostile->waitForLine("ready"), "");
  const auto port = process(root, "take-port");  // no true trigger arrives
  ASSERT_NE(port->waitForLine("ready"), "");
  const Listener listener = victim();
  EXPECT_TRUE(says(*listener, noPortLine));
  EXPECT_TRUE(listener->hearsNothing(milliseconds(300)));
  EXPECT_TRUE(closesAtOnce(*listener));
}

TEST_P(HostileUserTest, SilencesNobodyByTheName) {
  for (const char* attack : {"have-the-name", "listen-and-serve-nobody", "forge"}) {
    const auto hostile = stranger(attack);
    ASSERT_NE(hostile->waitForLine("ready"), "");
    const Listener listener = victim();
    EXPECT_TRUE(hears(*listener)) << attack;
    EXPECT_TRUE(listener->isReceiver()) << attack;
    EXPECT_TRUE(says(*listener, aloneLine)) << attack;
    EXPECT_EQ(listener->traced(noPortLine), 0) << attack;
    const Listener second = victim();
    EXPECT_TRUE(says(*second, noPortLine)) << attack;
    hostile->kill();
    EXPECT_TRUE(hears(*second)) << "it follows once the name is free: " << attack;
    EXPECT_FALSE(second->isReceiver()) << attack;
    EXPECT_TRUE(hears(*listener)) << attack;
    EXPECT_EQ(listener->traced(aloneLine), 1) << attack;
    EXPECT_TRUE(closesAtOnce(*listener)) << attack;
    EXPECT_TRUE(closesAtOnce(*second)) << attack;
  }
}

TEST_P(HostileUserTest, HandsOutNoDescriptorThatLingers) {
  const auto hostile = stranger("hand-out-lingering");
  ASSERT_NE(hostile->waitForLine("ready"), "");
  const Listener listener = victim();
  EXPECT_TRUE(hears(*listener));
  EXPECT_TRUE(closesAtOnce(*listener));
}

TEST_P(HostileProcessTest, LeavesNoDescriptorThatLingers) {
  const Listener listener = victim();
  ASSERT_TRUE(hears(*listener));
  const auto hostile = stranger("leave-lingering");
  ASSERT_NE(hostile->waitForLine("left"), "");
  EXPECT_TRUE(hears(*listener));
  const Listener second = victim();
  EXPECT_TRUE(hears(*second)) << "newcomers are taken in";
  EXPECT_TRUE(closesAtOnce(*listener));
  EXPECT_TRUE(hears(*second)) << "it has taken over";
  EXPECT_TRUE(closesAtOnce(*second));
}

TEST_P(HostileUserTest, UsesUpNoDescriptors) {
  constexpr int mostOfOneUser = 64;
  const Listener listener = victim();
  ASSERT_TRUE(hears(*listener));
  const int before = listener->descriptors();
  const auto hostile = stranger("crowd");
  const std::string pipes = hostile->waitForLine("pipes");
  ASSERT_NE(pipes, "");
  EXPECT_LE(listener->descriptors(), before + mostOfOneUser);
  EXPECT_EQ(pipes, GetParam().victim == root ? "pipes 64" : "pipes 0") << "only root is believed by others";
  EXPECT_TRUE(hears(*listener));
  const Listener second = victim();
  EXPECT_TRUE(hears(*second)) << "newcomers are taken in";
  hostile->kill();
  EXPECT_TRUE(eventually([&] { return listener->descriptors() <= before + 1; })) << "what is left is the second";
}

TEST_P(HostileProcessTest, BindsNothingBesideThePort) {
  const Listener listener = victim();
  ASSERT_TRUE(hears(*listener));
  const auto hostile = stranger("bind-beside");
  EXPECT_EQ(hostile->waitForLine("bound"), "bound 0");
  EXPECT_TRUE(hears(*listener));
}

TEST_P(HostileProcessTest, DelaysByThePortOnly) {
  const auto hostile = stranger("take-port");
  ASSERT_NE(hostile->waitForLine("ready"), "");
  const Listener listener = victim();
  EXPECT_TRUE(says(*listener, noPortLine));
  EXPECT_EQ(listener->traced("ERROR: openPort for GPIO-socket failed"), 1);
  hostile->kill();
  EXPECT_TRUE(hears(*listener)) << "it has taken the port as soon as it was free";
  EXPECT_EQ(listener->traced(noPortLine), 1);
}

INSTANTIATE_TEST_SUITE_P(Users, HostileUserTest,
                         testing::Values(Parties{"AUserAgainstRoot", root, anna}, Parties{"AUserAgainstAnother", bruno, anna}),
                         [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(Users, HostileProcessTest,
                         testing::Values(Parties{"AUserAgainstRoot", root, anna}, Parties{"RootAgainstAUser", anna, root},
                                         Parties{"AUserAgainstAnother", bruno, anna}),
                         [](const auto& test) { return test.param.name; });

// Listeners of several users who mean no harm.
class SeveralUsersTest : public UsersTest {
 protected:
  // How long the second user's listener hears nothing after the first one's has died.
  void takeOver(unsigned first, unsigned second, TimePoint::duration& took) {
    const Listener receiver = listen(first);
    ASSERT_TRUE(hears(*receiver));
    const Listener waiting = listen(second);
    EXPECT_TRUE(says(*waiting, noPortLine));
    EXPECT_TRUE(waiting->hearsNothing(milliseconds(300)));
    const TimePoint death = std::chrono::steady_clock::now();
    receiver->kill();
    const auto heard = waiting->hears(1, death);
    ASSERT_TRUE(heard);
    took = *heard - death;
    EXPECT_TRUE(areCalm(std::vector{waiting.get()}));
  }
};

TEST_F(SeveralUsersTest, RootServesEverybody) {
  const Listener service = listen(root);
  ASSERT_TRUE(hears(*service));
  for (const unsigned user : {anna, bruno}) {
    const Listener listener = listen(user);
    EXPECT_TRUE(hears(*listener)) << user;
    EXPECT_FALSE(listener->isReceiver()) << user;
  }
}

TEST_F(SeveralUsersTest, OneUserIsServedByItself) {
  const Listener receiver = listen(anna);
  ASSERT_TRUE(hears(*receiver));
  const Listener follower = listen(anna);
  EXPECT_TRUE(hears(*follower));
  EXPECT_FALSE(follower->isReceiver());
}

// Root among them: it believes no user.
TEST_F(SeveralUsersTest, WhoeverComesSecondWaitsForThePortAndTakesOver) {
  constexpr int tries = 3;  // a busy machine may hold one up
  for (const unsigned second : {root, bruno}) {
    TimePoint::duration took{};
    for (int i = 0; i < tries && (i == 0 || took >= milliseconds(200)); ++i)
      ASSERT_NO_FATAL_FAILURE(takeOver(anna, second, took)) << second;
    EXPECT_LT(took, milliseconds(200)) << second;
  }
}

}  // namespace
}  // namespace fringix::test
