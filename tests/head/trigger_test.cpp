#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "host.h"
#include "running_head.h"

namespace fringix::head {
namespace {

constexpr std::chrono::seconds limit{5};

HeadSettings headAt(const std::string& address) {
  HeadSettings settings = smallHead();
  settings.address = address;
  return settings;
}

// A client whose own address is chosen, told of triggers from now on.
struct Client {
  Client(const std::string& own, const std::string& head) : wire(head, own) { wire.greet(); }
  RawClient wire;
};

TEST(TriggerTest, ComesFromTheHeadsOwnAddress) {
  Host host;
  HeadServer first(headAt("127.0.0.2"));
  HeadServer second(headAt("127.0.0.3"));
  EXPECT_EQ(second.raiseTrigger(), 1U);
  EXPECT_EQ(host.next(), "127.0.0.3: 02UDP_GPIO");
  EXPECT_EQ(first.raiseTrigger(), 1U);
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
}

TEST(TriggerTest, ComesWhenTheLineIsSetThatIsWiredToTheInput) {
  Host host;
  HeadSettings settings = headAt("127.0.0.2");
  settings.triggerLine = 3;
  HeadServer head(settings);
  head.model().lines().set(2, 1);
  head.model().lines().set(3, 1);
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_FALSE(host.hearsMore());
}

TEST(TriggerTest, TellsTheHostOfEachClientOnce) {
  Host host;
  HeadServer server(headAt("127.0.0.2"));
  server.start();
  const Client first("127.0.0.1", "127.0.0.2");
  const Client second("127.0.0.1", "127.0.0.2");
  const Client third("127.0.0.8", "127.0.0.2");
  EXPECT_EQ(server.raiseTrigger(), 2U);
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_FALSE(host.hearsMore());
}

TEST(TriggerTest, AHeadOnAllAddressesTakesTheOneThatItsClientKnows) {
  Host host;
  HeadServer server(headAt("0.0.0.0"));
  server.start();
  EXPECT_EQ(server.raiseTrigger(), 0U) << "nobody is there to be told";
  const Client client("127.0.0.1", "127.0.0.7");
  EXPECT_EQ(server.raiseTrigger(), 1U);
  EXPECT_EQ(host.next(), "127.0.0.7: 02UDP_GPIO");
}

TEST(TriggerTest, TellsAHostUntilItsLastClientHasGone) {
  HeadServer server(headAt("0.0.0.0"));
  server.start();
  std::optional<Client> first(std::in_place, "127.0.0.1", "127.0.0.7");
  std::optional<Client> second(std::in_place, "127.0.0.1", "127.0.0.7");
  first.reset();
  EXPECT_EQ(server.raiseTrigger(), 1U);
  second.reset();
  const auto end = std::chrono::steady_clock::now() + limit;
  while (server.raiseTrigger() != 0 && std::chrono::steady_clock::now() < end) {
  }
  EXPECT_EQ(server.raiseTrigger(), 0U);
}

TEST(TriggerTest, AHostThatDoesNotListenStaysToldOf) {
  HeadServer server(headAt("127.0.0.2"));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(server.raiseTrigger(), 1U);
  Host host;
  EXPECT_EQ(server.raiseTrigger(), 1U);
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
}

TEST(TriggerTest, AnAddressOfAnotherMachineSendsNothing) { EXPECT_EQ(HeadServer(headAt("192.0.2.1")).raiseTrigger(), 0U); }

}  // namespace
}  // namespace fringix::head
