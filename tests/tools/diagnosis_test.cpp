// Findings from facts, without a network.
#include <gtest/gtest.h>

#include <string>

#include "console/statuses.h"
#include "diagnosis/checks.h"
#include "diagnosis/report.h"
#include "diagnosis/search.h"

namespace fringix::tool::diagnosis {
namespace {

using namespace std::chrono_literals;

constexpr const char* address = "192.168.0.10";

Network network(const char* text, const char* own) { return {parseIpv4(own), parseNetwork(text).mask}; }

Interface card(const char* name, const char* text, const char* own) {
  Interface card;
  card.name = name;
  card.network = network(text, own);
  card.megabits = 1000;
  card.mtu = 1500;
  return card;
}

Session openSession() {
  Session session;
  session.openMilliseconds = 2;
  session.holders = {{4711, "fringix", "me", true}};
  return session;
}

Head goodHead() {
  Head head;
  head.address = address;
  head.source = parseIpv4("192.168.0.1");
  head.reach = {Reach::head, {}};
  head.steps = {{"connecting", 0.3}, {"greeting", 0.4}, {"camera size", 0.2}};
  head.protocolVersion = 3300;
  head.serial = 1001;
  head.roundTrips.assign(100, 0.2);
  head.pictures.bytes = 1310720;
  head.pictures.megabits = {930, 940};
  head.pictures.milliseconds = 11;
  head.pictures.count = 5;
  head.traffic = Traffic{110, 4600, 0, 0};
  head.session = openSession();
  return head;
}

Facts healthy() {
  Facts facts;
  facts.asked = address;
  Interface loopback = card("lo", "127.0.0.0/8", "127.0.0.1");
  loopback.loopback = true;
  loopback.hasCable = false;
  facts.interfaces = {loopback, card("eth0", "192.168.0.0/24", "192.168.0.1")};
  facts.interfaces[1].answers = {{address, 1001, true}};
  facts.heads = {goodHead()};
  facts.portHolders.emplace();
  return facts;
}

// What is not green: "red connection 192.168.0.10".
std::string troubles(const Facts& facts) {
  std::string text;
  for (const Finding& finding : checkAll(facts)) {
    if (finding.colour != Colour::green) text += (text.empty() ? "" : ", ") + std::string(inWords(finding.colour)) + " " + titleOf(finding);
  }
  return text;
}

Finding theTrouble(const Facts& facts) {
  for (Finding& finding : checkAll(facts)) {
    if (finding.colour != Colour::green) return std::move(finding);
  }
  return {};
}

void closeHead(Facts& facts, Reach reach) {
  Head closed;
  closed.address = facts.heads[0].address;
  closed.source = facts.heads[0].source;
  closed.reach = {reach, "No route to host"};
  facts.heads[0] = closed;
}

void answerNobody(Facts& facts) { facts.interfaces[1].answers.clear(); }
Interface& eth0(Facts& facts) { return facts.interfaces[1]; }

struct Case {
  const char* name;
  void (*change)(Facts&);
  const char* expected;
  const char* said;   // of what it is, means or asks for, in some place
  const char* paste;  // in it; null: nothing is pasted
};

std::ostream& operator<<(std::ostream& out, const Case& each) { return out << each.name; }

class DiagnosisOf : public testing::TestWithParam<Case> {};

TEST_P(DiagnosisOf, IsItsFindingAndNoOther) {
  Facts facts = healthy();
  GetParam().change(facts);
  EXPECT_EQ(troubles(facts), GetParam().expected);
  const Finding finding = theTrouble(facts);
  const std::string all = finding.what + "\n" + finding.meaning + "\n" + finding.next;
  EXPECT_NE(all.find(GetParam().said), std::string::npos) << all;
  EXPECT_NE(finding.meaning, "") << all;
  EXPECT_NE(finding.next, "") << all;
  if (GetParam().paste == nullptr) {
    EXPECT_EQ(finding.paste, "");
  } else {
    EXPECT_NE(finding.paste.find(GetParam().paste), std::string::npos) << finding.paste;
  }
}

void foreignHead(Facts& facts) {
  answerNobody(facts);
  eth0(facts).answers = {{"192.168.5.10", 1001, false}};
}

const Case cases[] = {
    {"NoAnswerAtAll", [](Facts& f) { f.asked.clear(), f.heads.clear(), answerNobody(f); }, "red search", "no head answers in any network",
     nullptr},
    {"NoAnswerAndRulesThatOnlyRootReads",
     [](Facts& f) {
       f.asked.clear(), f.heads.clear(), answerNobody(f), f.firewalls = {{FirewallKind::nftables, false, {}}};
     },
     "red search", "can be read by root only", "sudo fringix doctor"},
    {"NobodyWithThatSerialNumber", [](Facts& f) { f.asked.clear(), f.heads.clear(), f.askedSerial = 77; }, "red search",
     "none with serial number 77", nullptr},
    {"NoNetwork", [](Facts& f) { f.asked.clear(), f.heads.clear(), f.interfaces.resize(1); }, "red search", "no network but itself",
     nullptr},
    {"HeadThatIsOff", [](Facts& f) { answerNobody(f), closeHead(f, Reach::unreachable); }, "red connection 192.168.0.10",
     "No machine on eth0 has this address", nullptr},
    {"HeadThatNoWayLeadsTo",
     [](Facts& f) { answerNobody(f), closeHead(f, Reach::unreachable), f.heads[0].address = "10.1.1.1", f.heads[0].source.reset(); },
     "red connection 10.1.1.1", "No network of this machine leads there", "sudo ip address add 10.1.1.2/24 dev eth0"},
    {"HeadBehindARouterThatIsOff", [](Facts& f) { answerNobody(f), closeHead(f, Reach::unreachable), f.heads[0].address = "10.1.1.1"; },
     "red connection 10.1.1.1", "A router on the way knows no machine", nullptr},
    {"NothingComesBack", [](Facts& f) { answerNobody(f), closeHead(f, Reach::timedOut); }, "red connection 192.168.0.10",
     "off, has another address, or a firewall", nullptr},
    {"SessionsDroppedByAFirewall", [](Facts& f) { closeHead(f, Reach::timedOut); }, "red connection 192.168.0.10",
     "It answers the search, so it is on and connected: a firewall drops TCP 44330", nullptr},
    {"Refused", [](Facts& f) { answerNobody(f), closeHead(f, Reach::refused); }, "red connection 192.168.0.10",
     "no head's program runs there", nullptr},
    {"BusyHead", [](Facts& f) { closeHead(f, Reach::closed); }, "red connection 192.168.0.10", "others have all its sessions", nullptr},
    {"HangingHead", [](Facts& f) { closeHead(f, Reach::silent); }, "red connection 192.168.0.10", "This one hangs", nullptr},
    {"StrangerOnThePort", [](Facts& f) { closeHead(f, Reach::noHead); }, "red connection 192.168.0.10", "Something else has this address",
     nullptr},
    {"AMachineThatMayNotConnect", [](Facts& f) { closeHead(f, Reach::failed); }, "red connection 192.168.0.10", "this machine", nullptr},
    {"WrongSubnet", [](Facts& f) { foreignHead(f), f.asked.clear(), f.heads.clear(); }, "red subnet 192.168.5.10", "outside 192.168.0.0/24",
     "sudo ip address add 192.168.5.1/24 dev eth0"},
    {"WrongSubnetOfTheHeadThatIsAsked",
     [](Facts& f) { foreignHead(f), closeHead(f, Reach::unreachable), f.heads[0].address = "192.168.5.10", f.heads[0].source.reset(); },
     "red subnet 192.168.5.10", "nothing opens it", "sudo ip address add 192.168.5.1/24 dev eth0"},
    {"WrongSubnetBehindARouter", [](Facts& f) { foreignHead(f), f.heads[0].address = "192.168.5.10"; }, "yellow subnet 192.168.5.10",
     "through a router", "sudo ip address add"},
    {"WrongSubnetOnWindows", [](Facts& f) { foreignHead(f), f.asked.clear(), f.heads.clear(), f.system = System::windows; },
     "red subnet 192.168.5.10", "outside", "netsh interface ipv4 add address \"eth0\" 192.168.5.1 255.255.255.0"},
    {"AHeadWithTheEndOfThisMachinesAddress",
     [](Facts& f) {
       f.asked.clear(), f.heads.clear(), answerNobody(f), eth0(f).answers = {{"192.168.5.1", 7, false}};
     },
     "red subnet 192.168.5.1", "outside", "192.168.5.2/24"},
    {"AnotherMask", [](Facts& f) { eth0(f).answers[0].toSearch = false; }, "yellow mask 192.168.0.10", "not what is sent to 192.168.0.255",
     nullptr},
    {"NoAnswerToTheSearch", [](Facts& f) { answerNobody(f); }, "yellow search 192.168.0.10", "drops broadcasts to UDP 44332", nullptr},
    {"TwoCardsInOneNetwork", [](Facts& f) { f.interfaces.push_back(card("eth1", "192.168.0.0/24", "192.168.0.2")); },
     "yellow interface eth1", "Give each card a network of its own", nullptr},
    {"NoLink", [](Facts& f) { f.interfaces.push_back(card("eth1", "10.0.0.0/24", "10.0.0.1")), f.interfaces[2].linkUp = false; },
     "yellow interface eth1", "no link", "sudo ethtool eth1"},
    {"HalfDuplex", [](Facts& f) { eth0(f).halfDuplex = true; }, "yellow interface eth0", "half duplex", "sudo ethtool eth0"},
    {"ASlowLinkThatIsUsedWell", [](Facts& f) { eth0(f).megabits = 100, f.heads[0].pictures.megabits = {94}; }, "yellow interface eth0",
     "takes 105 ms at least", "sudo ethtool eth0"},
    {"NobodyGaveAnAddress", [](Facts& f) { f.interfaces.push_back(card("eth1", "169.254.0.0/16", "169.254.3.4")); },
     "yellow interface eth1", "address of its own making", nullptr},
    {"SlowPictures",
     [](Facts& f) {
       f.heads[0].pictures.megabits = {90, 94};
     },
     "red picture 192.168.0.10", "500 Mbit/s at least", "sudo ethtool eth0"},
    {"RatherSlowPictures",
     [](Facts& f) {
       f.heads[0].pictures.megabits = {300, 100};
     },
     "yellow picture 192.168.0.10", "300 Mbit/s over a link of 1000 Mbit/s", "sudo ethtool eth0"},
    {"SlowPicturesOverATunnel", [](Facts& f) { eth0(f).hasCable = false, f.heads[0].pictures.megabits = {9}; }, "red picture 192.168.0.10",
     "whose speed the system does not tell", "sudo ethtool eth0"},
    {"PicturesThatDoNotPass", [](Facts& f) { f.heads[0].pictures.broken = "nothing comes within 5 s"; }, "red picture 192.168.0.10",
     "packets of full size are dropped", "fringix --trace live 192.168.0.10"},
    {"PacketsTooLargeForASwitch", [](Facts& f) { f.heads[0].pictures.broken = "nothing comes within 5 s", eth0(f).mtu = 9000; },
     "red picture 192.168.0.10", "an MTU of 9000", "sudo ip link set dev eth0 mtu 1500"},
    {"NoPicture", [](Facts& f) { f.heads[0].pictures.none = true; }, "yellow picture 192.168.0.10", "no live picture", nullptr},
    {"LossesOnTheWayOut",
     [](Facts& f) {
       f.heads[0].traffic = Traffic{110, 4600, 5, 0};
     },
     "red losses 192.168.0.10", "5 of 110 segments", "ip -s link show eth0"},
    {"FewLosses",
     [](Facts& f) {
       f.heads[0].traffic = Traffic{1000, 4600, 4, 0};
     },
     "yellow losses 192.168.0.10", "4 of 1000", "ip -s link"},
    {"LossesOnTheWayIn", [](Facts& f) { f.heads[0].pictures.disturbed = 2; }, "yellow losses 192.168.0.10",
     "2 of 5 pictures came with gaps", "ip -s link"},
    {"LossesThatMakeAllElseSlow",
     [](Facts& f) {
       answerNobody(f);
       f.heads[0].traffic = Traffic{110, 400, 9, 200};
       f.heads[0].pictures.megabits = {1};
       f.heads[0].roundTrips.assign(100, 210);
       f.heads[0].steps[0].milliseconds = 1003;
     },
     "red losses 192.168.0.10", "9 of 110", "ip -s link"},
    {"SlowRoundTrips", [](Facts& f) { f.heads[0].roundTrips.assign(100, 25); }, "yellow round trip 192.168.0.10", "25 ms median", nullptr},
    {"VerySlowRoundTrips", [](Facts& f) { f.heads[0].roundTrips.assign(40, 250); }, "red round trip 192.168.0.10", "worst of 40", nullptr},
    {"AHeadThatPauses", [](Facts& f) { std::fill_n(f.heads[0].roundTrips.begin(), 5, 130); }, "yellow round trip 192.168.0.10", "5 of them",
     nullptr},
    {"ABrokenHandshake",
     [](Facts& f) { f.heads[0].brokenAt = "camera size", f.heads[0].reason = "nothing comes within 5 s", f.heads[0].session.reset(); },
     "red handshake 192.168.0.10", "breaks off at the camera size: nothing comes within 5 s", nullptr},
    {"ALateGreeting", [](Facts& f) { f.heads[0].steps[1].milliseconds = 1500; }, "yellow handshake 192.168.0.10",
     "1500 ms for its greeting", nullptr},
    {"AGreetingThatComesTooLate", [](Facts& f) { f.heads[0].steps[1].milliseconds = 2100; }, "red handshake 192.168.0.10",
     "2100 ms for its greeting", nullptr},
    {"AnOldHead", [](Facts& f) { f.heads[0].protocolVersion = 3100; }, "yellow version 192.168.0.10",
     "too old for 3 of the functions: SLSetMask (3200), SLExecProjCmd (3300), SLSetLedPowerValue (3300)", nullptr},
    {"ASessionThatTheLibraryCannotOpen",
     [](Facts& f) { f.heads[0].session->operation = "SLDevAlloc", f.heads[0].session->status = SLSYSTEM_ERROR; },
     "red library 192.168.0.10", "reports a failure when asked for its camera (SLSYSTEM_ERROR, -4)", "fringix --trace info 192.168.0.10"},
    {"TakenPort",
     [](Facts& f) {
       f.heads[0].session->holders = {{4242, "nc", "alice", false}}, f.portHolders = f.heads[0].session->holders;
     },
     "red trigger port", "\"nc\" (process 4242) of user alice has UDP port 44331", "kill 4242"},
    {"TakenPortOfSomebody",
     [](Facts& f) {
       f.heads.clear(), f.portHolders = {{0, "", "root", false}};
     },
     "red trigger port", "a program of user root", "sudo ss -lunp"},
    {"TakenPortOnWindows",
     [](Facts& f) {
       f.heads.clear(), f.portHolders = {{7, "nc.exe", "", false}}, f.system = System::windows;
     },
     "red trigger port", "nc.exe", "taskkill /pid 7"},
    {"ReservedPort", [](Facts& f) { f.bindError = "access denied", f.system = System::windows; }, "red trigger port",
     "cannot be bound: access denied", "netsh interface ipv4 show excludedportrange protocol=udp"},
    {"TakenPortOfWhomTheSystemDoesNotTell", [](Facts& f) { f.heads.clear(), f.portHolders.reset(), f.bindError = "address in use"; },
     "yellow trigger port", "cannot be bound (address in use), and the system does not tell who has it", "sudo ss -lunp"},
    {"NoTriggerWhileItWaited", [](Facts& f) { f.waited = true, f.heads[0].session->listened = 3s; }, "yellow triggers 192.168.0.10",
     "none came in 3.0 s", "sudo tcpdump -ni any udp port 44331"},
};

INSTANTIATE_TEST_SUITE_P(Trouble, DiagnosisOf, testing::ValuesIn(cases), [](const auto& test) { return std::string(test.param.name); });

TEST(Diagnosis, OfAHealthyNetworkIsGreen) {
  EXPECT_EQ(troubles(healthy()), "");
  Facts facts = healthy();
  facts.waited = true;
  facts.heads[0].session->triggers = 1;
  EXPECT_EQ(troubles(facts), "");
}

TEST(Diagnosis, TellsTheNumbersOfAHealthyHead) {
  std::string all;
  for (const Finding& finding : checkAll(healthy())) all += titleOf(finding) + ": " + finding.what + "\n";
  for (const char* part :
       {"interface eth0: 192.168.0.1/24, asks 192.168.0.255, 1 Gbit/s, MTU 1500; 1 head answers: 1001 at 192.168.0.10\n",
        "interface lo: 127.0.0.1/8, asks 127.255.255.255, MTU 1500; no head answers\n", "search: 1 head answers\n",
        "connection 192.168.0.10: TCP 44330 opens in 0.30 ms\n",
        "handshake 192.168.0.10: 0.90 ms in all: connecting 0.30 ms, greeting 0.40 ms, camera size 0.20 ms\n",
        "version 192.168.0.10: protocol 3300, which has all commands\n", "round trip 192.168.0.10: 0.20 ms median, 0.20 ms worst of 100\n",
        "picture 192.168.0.10: 1310720 bytes in 11 ms, 940 Mbit/s over a link of 1000 Mbit/s\n",
        "losses 192.168.0.10: 0 of 110 segments sent again; 0 of 5 pictures came with gaps\n",
        "library 192.168.0.10: opens a session in 2.00 ms\n", "triggers 192.168.0.10: none came meanwhile\n"})
    EXPECT_NE(all.find(part), std::string::npos) << part << "is not in\n" << all;
}

// What a head of another network would not be asked anyway, nobody has to be told.
TEST(Diagnosis, AHeadBehindARouterNeedNotAnswerTheSearch) {
  Facts facts = healthy();
  answerNobody(facts);
  facts.heads[0].address = "10.9.9.9";
  EXPECT_EQ(troubles(facts), "");
}

TEST(Diagnosis, ASerialNumberThatAnswersIsFine) {
  Facts facts = healthy();
  facts.asked.clear();
  facts.askedSerial = 1001;
  EXPECT_EQ(troubles(facts), "");
}

TEST(Diagnosis, OneStutterOfThisMachineIsNoFinding) {
  Facts facts = healthy();
  facts.heads[0].roundTrips[7] = 900;
  EXPECT_EQ(troubles(facts), "");
}

TEST(Diagnosis, AListenerThatSharesThePortIsFine) {
  Facts facts = healthy();
  facts.portHolders = {{4711, "fringix", "me", true}};
  EXPECT_EQ(troubles(facts), "");
}

// Three things are wrong, of which one has a line to paste.
Facts troubled() {
  Facts facts = healthy();
  closeHead(facts, Reach::silent);
  facts.portHolders = {{4242, "nc", "alice", false}};
  return facts;
}

TEST(DiagnosisReport, HasLinesOf80CharactersAndPastesWhole) {
  const std::string text = format(checkAll(troubled()), false);
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    EXPECT_LE(end - begin, 80U) << text.substr(begin, end - begin);
    EXPECT_FALSE(end > begin && text[end - 1] == ' ') << text.substr(begin, end - begin);
  }
  EXPECT_NE(text.find("\n            kill 4242\n"), std::string::npos) << text;
}

TEST(DiagnosisReport, TellsThisMachineAndEachHeadApart) {
  const std::string text = format(checkAll(troubled()), false);
  EXPECT_TRUE(text.starts_with("this machine\n  green   interface lo: 127.0.0.1/8, ")) << text;
  EXPECT_NE(text.find("\n  RED     trigger port: triggers cannot arrive"), std::string::npos) << text;
  EXPECT_NE(text.find("\n\nhead 192.168.0.10\n  RED     connection: 192.168.0.10:44330 accepts"), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("\n\n2 red, 0 yellow, 4 green\n")) << text;
}

// The same words as "fringix explain -11".
TEST(DiagnosisReport, SaysWhatProgramsGet) {
  const std::string text = format(checkAll(troubled()), false);
  const std::string begin = findStatus("-11")->text.substr(0, 24);
  EXPECT_NE(text.find("Programs get -11 SLHANDSHAKE_TIMEOUT: " + begin), std::string::npos) << text;
}

TEST(DiagnosisReport, ColoursOnlyTheWordThatIsOne) {
  const std::string text = format(checkAll(troubled()), true);
  EXPECT_NE(text.find("\n  \x1b[1;31mRED     \x1b[0mconnection: "), std::string::npos) << text;
  EXPECT_NE(text.find("\n  \x1b[32mgreen   \x1b[0msearch: "), std::string::npos) << text;
}

TEST(DiagnosisReport, TellsChangesFromRoundToRound) {
  const Findings before = checkAll(healthy());
  Facts facts = healthy();
  facts.heads[0].roundTrips.assign(100, 0.3);
  EXPECT_EQ(formatChanges(before, checkAll(facts)), "");
  closeHead(facts, Reach::closed);
  const Findings now = checkAll(facts);
  EXPECT_TRUE(formatChanges(before, now).starts_with("green -> RED  connection 192.168.0.10: 192.168.0.10:44330 accepts"))
      << formatChanges(before, now);
  EXPECT_EQ(formatChanges(now, before), "RED -> green  connection 192.168.0.10\n");
}

TEST(DiagnosisSearch, ReadsTheSerialNumberOfAnAnswer) {
  EXPECT_EQ(serialOf("SERIAL 1001 MODEL 1"), 1001);
  EXPECT_EQ(serialOf("S\t-7 x"), -7);
  for (const char* text : {"", "SERIAL", "SERIAL ", "SERIAL x1", "1001"}) EXPECT_EQ(serialOf(text), -1) << text;
}

TEST(DiagnosisIpv4, AddressesAndNetworks) {
  EXPECT_EQ(formatIpv4(parseIpv4("192.168.0.10")), "192.168.0.10");
  for (const char* text : {"", "1.2.3", "1.2.3.256", "1.2.3.4.5", "a.b.c.d", "1.2.3.4 ", "-1.2.3.4"})
    EXPECT_EQ(parseIpv4(text), 0U) << text;
  EXPECT_EQ(parseNetwork("10.1.2.3/8").text(), "10.0.0.0/8");
  EXPECT_EQ(parseNetwork("10.1.2.3/255.255.0.0").text(), "10.1.0.0/16");
  EXPECT_EQ(parseNetwork("10.1.2.3").text(), "10.1.2.3/32");
  EXPECT_EQ(parseNetwork("10.1.2.3/99").text(), "10.1.2.3/32");
  EXPECT_EQ(parseNetwork("Anywhere").mask, 0U);
}

}  // namespace
}  // namespace fringix::tool::diagnosis
