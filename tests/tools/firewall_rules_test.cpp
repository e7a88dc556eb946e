// What rules of firewalls, as their own tools print them, do with the datagrams of heads.
#include <gtest/gtest.h>

#include <string>

#include "diagnosis/checks.h"
#include "diagnosis/rules.h"

namespace fringix::tool::diagnosis {
namespace {

const Packet trigger{"eth0", parseIpv4("192.168.0.10"), 44331};

const char* inWords(Fate fate) { return fate == Fate::accepted ? "accepted" : fate == Fate::dropped ? "dropped" : "unknown"; }

std::string inputChain(const std::string& policy, const std::string& rules) {
  return "table inet filter {\n\tset friends {\n\t\ttype ipv4_addr\n\t\telements = { 10.0.0.1 }\n\t}\n\n\tchain input {\n\t\ttype filter "
         "hook input priority filter; policy " +
         policy + ";\n" + rules +
         "\t}\n\n\tchain heads {\n\t\tudp dport 44331 accept\n\t}\n\tchain output {\n\t\ttype filter hook output priority filter; policy "
         "drop;\n\t}\n}\n";
}

struct Rules {
  FirewallKind kind;
  const char* name;
  std::string text;
  const char* fate;
};

std::ostream& operator<<(std::ostream& out, const Rules& rules) { return out << rules.name << "\n" << rules.text; }

// What stands before and behind them in all cases.
std::string whole(const Rules& rules) {
  switch (rules.kind) {
    case FirewallKind::iptables:
      return "*filter\n:INPUT DROP [0:0]\n:FORWARD ACCEPT [0:0]\n:heads - [0:0]\n-A heads -p udp -m udp --dport 44331 -j ACCEPT\n" +
             rules.text + "COMMIT\n";
    case FirewallKind::ufw:
      return "Status: active\nLogging: on (low)\nDefault: deny (incoming), allow (outgoing), disabled (routed)\nNew profiles: skip\n\n"
             "To                         Action      From\n--                         ------      ----\n" +
             rules.text;
    case FirewallKind::firewalld:
      return "public\nblock\n  target: %%REJECT%%\n  interfaces: \n  sources: \n  ports: \n\n"
             "public (active)\n  target: default\n  icmp-block-inversion: no\n" +
             rules.text + "\ntrusted\n  target: ACCEPT\n  interfaces: eth7\n  sources: 10.0.0.0/8\n  ports: \n";
    case FirewallKind::windows:
      return "program C:\\Tools\\fringix.exe\nprofile Private on block\n" + rules.text;
    default:
      return rules.text;
  }
}

class FirewallRules : public testing::TestWithParam<Rules> {};

TEST_P(FirewallRules, DoWithATrigger) {
  EXPECT_STREQ(inWords(judge({GetParam().kind, true, whole(GetParam())}, trigger).fate), GetParam().fate);
}

constexpr const char* openRule =
    "  interfaces: eth0\n  sources: \n  services: ssh\n  ports: \n  rich rules: \n\trule family=\"ipv4\" source address=\"";

const Rules allRules[] = {
    {FirewallKind::nftables, "NftablesNone", "", "accepted"},
    {FirewallKind::nftables, "NftablesAcceptingPolicy", inputChain("accept", ""), "accepted"},
    {FirewallKind::nftables, "NftablesDroppingPolicy", inputChain("drop", ""), "dropped"},
    {FirewallKind::nftables, "NftablesByPort", inputChain("drop", "\t\tudp dport 44331 accept\n"), "accepted"},
    {FirewallKind::nftables, "NftablesByPortsInASet",
     inputChain("drop", "\t\tudp dport { 53, 44330-44332 } counter packets 3 bytes 90 accept # handle 4\n"), "accepted"},
    {FirewallKind::nftables, "NftablesAnotherPort", inputChain("drop", "\t\tudp dport { 53, 123 } accept\n"), "dropped"},
    {FirewallKind::nftables, "NftablesOfTcpOnly", inputChain("drop", "\t\ttcp dport 44331 accept\n\t\tip6 saddr fe80::/10 accept\n"),
     "dropped"},
    {FirewallKind::nftables, "NftablesByNetwork", inputChain("drop", "\t\tip saddr 192.168.0.0/24 meta l4proto udp accept\n"), "accepted"},
    {FirewallKind::nftables, "NftablesByAnotherNetwork", inputChain("drop", "\t\tip saddr { 10.0.0.0/8, 192.168.1.0/24 } accept\n"),
     "dropped"},
    {FirewallKind::nftables, "NftablesByInterface", inputChain("drop", "\t\tiifname \"eth*\" accept\n"), "accepted"},
    {FirewallKind::nftables, "NftablesByNoInterface", inputChain("drop", "\t\tiif \"lo\" accept\n\t\tiifname != \"eth0\" accept\n"),
     "dropped"},
    {FirewallKind::nftables, "NftablesOnlyWhatWasAskedFor",
     inputChain("drop", "\t\tct state established,related accept\n\t\tct state vmap { invalid : drop, established : accept }\n"),
     "dropped"},
    {FirewallKind::nftables, "NftablesWhatIsNew", inputChain("drop", "\t\tct state { new, established } accept\n"), "accepted"},
    {FirewallKind::nftables, "NftablesWhatIsNewByAMap", inputChain("accept", "\t\tct state vmap { established : accept, new : drop }\n"),
     "dropped"},
    {FirewallKind::nftables, "NftablesAJump", inputChain("drop", "\t\tjump heads\n"), "accepted"},
    {FirewallKind::nftables, "NftablesAJumpThatComesBack", inputChain("drop", "\t\tip saddr 10.0.0.1 jump heads\n"), "dropped"},
    {FirewallKind::nftables, "NftablesARejection",
     inputChain("accept", "\t\tudp dport 44331 log prefix \"no heads\" reject with icmp port-unreachable\n"), "dropped"},
    {FirewallKind::nftables, "NftablesAnEarlierVerdict",
     inputChain("accept", "\t\tudp dport 44331 accept comment \"heads\"\n\t\tudp dport 44331 drop\n"), "accepted"},
    {FirewallKind::nftables, "NftablesWhatIsNotUnderstood", inputChain("drop", "\t\tip saddr @friends accept\n"), "unknown"},
    {FirewallKind::nftables, "NftablesSomethingStrange", inputChain("accept", "\t\tmeta mark 0x1 drop\n"), "unknown"},
    {FirewallKind::nftables, "NftablesOfTheOtherFamily",
     "table ip6 x {\n\tchain input {\n\t\ttype filter hook input priority filter; policy drop;\n\t}\n}\n", "accepted"},
    {FirewallKind::nftables, "NftablesOfASecondTable",
     inputChain("accept", "") + "table ip raw {\n\tchain early {\n\t\ttype filter hook prerouting priority raw; policy "
                                "accept;\n\t\tudp dport 44331 drop\n\t}\n}\n",
     "dropped"},
    {FirewallKind::iptables, "IptablesPolicy", "", "dropped"},
    {FirewallKind::iptables, "IptablesByPort", "-A INPUT -p udp -m udp --dport 44331 -m comment --comment \"for -j DROP\" -j ACCEPT\n",
     "accepted"},
    {FirewallKind::iptables, "IptablesByPorts", "-A INPUT -p udp -m multiport --dports 53,44330:44332 -j ACCEPT\n", "accepted"},
    {FirewallKind::iptables, "IptablesByNetwork", "-A INPUT -s 192.168.0.0/24 -i eth+ -j ACCEPT\n", "accepted"},
    {FirewallKind::iptables, "IptablesByAnother", "-A INPUT ! -s 192.168.0.0/24 -j ACCEPT\n", "dropped"},
    {FirewallKind::iptables, "IptablesOfTcp", "-A INPUT -p tcp -m tcp --dport 44331 -j ACCEPT\n-A INPUT -i lo -j ACCEPT\n", "dropped"},
    {FirewallKind::iptables, "IptablesOnlyWhatWasAskedFor", "-A INPUT -m conntrack --ctstate RELATED,ESTABLISHED -j ACCEPT\n", "dropped"},
    {FirewallKind::iptables, "IptablesAJump", "-A INPUT -j LOG --log-prefix \"x \"\n-A INPUT -j heads\n", "accepted"},
    {FirewallKind::iptables, "IptablesToNowhere", "-A INPUT -j nobody\n", "unknown"},
    {FirewallKind::iptables, "IptablesNotUnderstood", "-A INPUT -m mark --mark 0x1 -j ACCEPT\n", "unknown"},
    {FirewallKind::iptables, "IptablesCut", "-A INPUT -p\n-A INPUT !\n-A INPUT\n-A\n", "dropped"},
    {FirewallKind::ufw, "UfwNoRules", "", "dropped"},
    {FirewallKind::ufw, "UfwByPort", "44331/udp                  ALLOW IN    Anywhere\n", "accepted"},
    {FirewallKind::ufw, "UfwByPortOfBoth", "44331                      ALLOW IN    Anywhere\n", "accepted"},
    {FirewallKind::ufw, "UfwOfTcp", "44331/tcp                  ALLOW IN    Anywhere\nOpenSSH                    ALLOW IN    Anywhere\n",
     "dropped"},
    {FirewallKind::ufw, "UfwOfTheOtherFamily", "44331/udp (v6)             ALLOW IN    Anywhere (v6)\n", "dropped"},
    {FirewallKind::ufw, "UfwByNetwork", "Anywhere/udp               ALLOW IN    192.168.0.0/24/udp\n", "accepted"},
    {FirewallKind::ufw, "UfwByAnotherNetwork", "Anywhere                   ALLOW IN    10.0.0.0/8\n", "dropped"},
    {FirewallKind::ufw, "UfwByInterface", "Anywhere on eth0           ALLOW IN    Anywhere\n", "accepted"},
    {FirewallKind::ufw, "UfwByAnotherInterface", "44331/udp on wlan0         ALLOW IN    Anywhere\n", "dropped"},
    {FirewallKind::ufw, "UfwTheFirstDecides",
     "44330:44332/udp            DENY IN     192.168.0.10\n44331/udp                  ALLOW IN    Anywhere\n", "dropped"},
    {FirewallKind::ufw, "UfwToThisAddress", "192.168.0.1/udp            ALLOW IN    192.168.0.0/24/udp\n", "accepted"},
    {FirewallKind::ufw, "UfwToAnotherPortOfThisAddress", "192.168.0.1 80/tcp         ALLOW IN    192.168.0.10\n", "dropped"},
    {FirewallKind::ufw, "UfwOutOnly", "44331/udp                  ALLOW OUT   Anywhere\n", "dropped"},
    {FirewallKind::firewalld, "FirewalldWithoutPorts", "  interfaces: eth0\n  sources: \n  services: ssh\n  ports: \n", "dropped"},
    {FirewallKind::firewalld, "FirewalldWithThePort", "  interfaces: eth0\n  sources: \n  ports: 8080/tcp 44331/udp\n", "accepted"},
    {FirewallKind::firewalld, "FirewalldWithThePortOfTcp", "  interfaces: eth0\n  sources: \n  ports: 44331/tcp\n", "dropped"},
    {FirewallKind::firewalld, "FirewalldWithTheProtocol", "  interfaces: eth0\n  sources: \n  ports: \n  protocols: icmp udp\n",
     "accepted"},
    {FirewallKind::firewalld, "FirewalldByDefault", "  interfaces: eth1\n  sources: \n  ports: 44330-44332/udp\n", "accepted"},
    {FirewallKind::firewalld, "FirewalldARichRule", openRule + std::string("192.168.0.0/24\" protocol value=\"udp\" accept\n"), "accepted"},
    {FirewallKind::firewalld, "FirewalldARichRuleForAnother", openRule + std::string("10.0.0.0/24\" protocol value=\"udp\" accept\n"),
     "dropped"},
    {FirewallKind::firewalld, "FirewalldARichRuleForAPort",
     openRule + std::string("192.168.0.0/16\" port port=\"44331\" protocol=\"udp\" accept\n"), "accepted"},
    {FirewallKind::firewalld, "FirewalldARichRuleThatDrops", openRule + std::string("192.168.0.0/16\" drop\n"), "dropped"},
    {FirewallKind::windows, "WindowsNoRules", "", "dropped"},
    {FirewallKind::windows, "WindowsByPort", "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|LPort=44331|Name=heads|\n", "accepted"},
    {FirewallKind::windows, "WindowsByPortOfTcp", "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=6|LPort=44331|Name=x|\n", "dropped"},
    {FirewallKind::windows, "WindowsSwitchedOff", "v2.31|Action=Allow|Active=FALSE|Dir=In|Protocol=17|LPort=44331|Name=x|\n", "dropped"},
    {FirewallKind::windows, "WindowsOutward", "v2.31|Action=Allow|Active=TRUE|Dir=Out|Protocol=17|LPort=44331|Name=x|\n", "dropped"},
    {FirewallKind::windows, "WindowsOfThisProgram",
     "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|Profile=Private|App=c:\\tools\\FRINGIX.exe|Name=x|\n", "accepted"},
    {FirewallKind::windows, "WindowsOfAnotherProgram",
     "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|App=C:\\Tools\\other.exe|Name=x|\n", "dropped"},
    {FirewallKind::windows, "WindowsOfAnotherProfile",
     "v2.31|Action=Allow|Active=TRUE|Dir=In|Profile=Public|LPort=44331|Protocol=17|Name=x|\n", "dropped"},
    {FirewallKind::windows, "WindowsOfSeveralProfiles",
     "v2.31|Action=Allow|Active=TRUE|Dir=In|Profile=Domain|Profile=Private|LPort=44331|Protocol=17|Name=x|\n", "accepted"},
    {FirewallKind::windows, "WindowsOfAnotherNetwork", "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|RA4=10.0.0.0/255.0.0.0|Name=x|\n",
     "dropped"},
    {FirewallKind::windows, "WindowsOfTheNetwork",
     "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|RA4=10.0.0.0/255.0.0.0|RA4=192.168.0.0/255.255.255.0|Name=x|\n", "accepted"},
    {FirewallKind::windows, "WindowsOfAService", "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|App=System|Svc=dhcp|Name=x|\n",
     "dropped"},
    {FirewallKind::windows, "WindowsBlockedBesides",
     "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|Name=x|\nv2.31|Action=Block|Active=TRUE|Dir=In|LPort=44331|Protocol=17|"
     "Name=y|\n",
     "dropped"},
    {FirewallKind::windows, "WindowsOffInTheOtherProfile", "profile Public off block\nv2.31|Action=Allow|Active=TRUE|Dir=In|Name=x|\n",
     "accepted"},
    {FirewallKind::windows, "WindowsOnInTheOtherProfile",
     "profile Public on block\nv2.31|Action=Allow|Active=TRUE|Dir=In|Profile=Private|Name=x|\n", "dropped"}};

INSTANTIATE_TEST_SUITE_P(Of, FirewallRules, testing::ValuesIn(allRules), [](const auto& test) { return std::string(test.param.name); });

TEST(UfwItself, MayBeOffOrLetEverythingIn) {
  EXPECT_EQ(judgeByUfw("Status: inactive\n", trigger).fate, Fate::accepted);
  EXPECT_EQ(judgeByUfw("Status: active\nDefault: allow (incoming), allow (outgoing)\n", trigger).fate, Fate::accepted);
  EXPECT_EQ(judgeByUfw("Status: active\nDefault: deny (incoming)\n", {"lo", 0x7F000002, 44331}).fate, Fate::accepted);
}

TEST(FirewalldItself, TakesASourceBeforeAnInterface) {
  const std::string zones =
      "public\npublic\n  target: default\n  interfaces: eth0\n  ports: \nheads\n  target: ACCEPT\n  interfaces: \n  sources: "
      "192.168.0.0/24\n";
  EXPECT_EQ(judgeByFirewalld(zones, trigger).fate, Fate::accepted);
  EXPECT_EQ(judgeByFirewalld("", trigger).fate, Fate::unknown);
}

// A machine beside a head, with a firewall.
Facts behind(Firewall wall) {
  Facts facts;
  facts.asked = "192.168.0.10";
  facts.portHolders.emplace();
  Interface card;
  card.name = "eth0";
  card.network = {parseIpv4("192.168.0.1"), 0xFFFFFF00};
  facts.interfaces = {card};
  Head head;
  head.address = facts.asked;
  head.source = card.network.address;
  head.reach = {Reach::head, {}};
  facts.heads = {head};
  facts.firewalls = {std::move(wall)};
  return facts;
}

struct Wall {
  const char* name;
  Firewall firewall;
  const char* paste;
};

class FirewallThatDrops : public testing::TestWithParam<Wall> {};

// And nothing is said of the search beside it, which it explains.
TEST_P(FirewallThatDrops, IsRedWithTheLineThatLetsHeadsIn) {
  const Facts facts = behind(GetParam().firewall);
  const Findings findings = checkFirewalls(facts);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].colour, Colour::red);
  EXPECT_EQ(findings[0].subject, "eth0");
  EXPECT_NE(findings[0].what.find("drops answers to searches and triggers, UDP 44331, from 192.168.0.0/24"), std::string::npos)
      << findings[0].what;
  EXPECT_EQ(findings[0].paste, GetParam().paste);
  EXPECT_TRUE(checkSearch(facts).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Of, FirewallThatDrops,
    testing::Values(
        Wall{"ufw",
             {FirewallKind::ufw, true, "Status: active\nDefault: deny (incoming)\n"},
             "sudo ufw prepend allow proto udp from 192.168.0.0/24"},
        Wall{"nftables",
             {FirewallKind::nftables, true, inputChain("drop", "")},
             "sudo nft insert rule inet filter input ip saddr 192.168.0.0/24 meta l4proto udp accept"},
        Wall{"iptables",
             {FirewallKind::iptables, true, ":INPUT DROP [0:0]\n", "iptables-legacy"},
             "sudo iptables-legacy -I INPUT -s 192.168.0.0/24 -p udp -j ACCEPT"},
        Wall{"firewalld",
             {FirewallKind::firewalld, true, "public\npublic (active)\n  target: default\n  interfaces: eth0\n"},
             "sudo firewall-cmd --permanent --zone=public --add-rich-rule='rule family=\"ipv4\" source address=\"192.168.0.0/24\" protocol "
             "value=\"udp\" accept' && sudo firewall-cmd --reload"},
        Wall{"windows",
             {FirewallKind::windows, true, "profile Public on block\n"},
             "netsh advfirewall firewall add rule name=\"Fringix heads\" dir=in action=allow protocol=UDP remoteip=192.168.0.0/24"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FirewallOfThisMachine, IsGreenWhereItDropsNothingOrNobodyKnows) {
  for (const Firewall& wall :
       {Firewall{FirewallKind::nftables, true, inputChain("accept", "")}, Firewall{FirewallKind::nftables, false, ""},
        Firewall{FirewallKind::nftables, true, inputChain("drop", "\t\tmeta mark 1 accept\n")}}) {
    const Findings findings = checkFirewalls(behind(wall));
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].colour, Colour::green) << findings[0].what;
  }
}

// Rules that seem to drop what has come are read wrongly.
TEST(FirewallOfThisMachine, IsBelievedLessThanATriggerThatCame) {
  Facts facts = behind({FirewallKind::nftables, true, inputChain("drop", "")});
  facts.heads[0].session.emplace().triggers = 1;
  facts.interfaces[0].answers = {{"192.168.0.10", 1001, true}};
  EXPECT_EQ(checkFirewalls(facts)[0].colour, Colour::green);
}

TEST(FirewallOfThisMachine, ThatDropsAnswersOnlyIsNoHindrance) {
  Facts facts = behind({FirewallKind::nftables, true, inputChain("drop", "\t\tudp dport 44331 accept\n")});
  EXPECT_EQ(checkFirewalls(facts)[0].colour, Colour::yellow);
  facts.heads.clear();
  EXPECT_EQ(checkFirewalls(facts)[0].colour, Colour::red);
}

}  // namespace
}  // namespace fringix::tool::diagnosis
