// The built doctor in networks in which one thing is wrong: it says that, and nothing else.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fringix/fringix.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../diagnosed.h"
#include "support/child_process.h"
#include "support/posix/networks.h"
#include "support/scripted_head.h"

namespace fringix::test {
namespace {

constexpr const char* notPermitted = "network namespaces and interfaces for them (/dev/net/tun) are not permitted here";
constexpr unsigned char tcp = 6;
constexpr unsigned char udp = 17;

unsigned at(std::string_view frame, std::size_t place) { return place < frame.size() ? static_cast<unsigned char>(frame[place]) : 0; }

// Of an Ethernet frame with IPv4.
bool isOf(std::string_view frame, unsigned char protocol) { return at(frame, 12) == 8 && at(frame, 13) == 0 && at(frame, 23) == protocol; }

bool hasPort(std::string_view frame, unsigned port) {
  const std::size_t ports = 14 + 4 * (at(frame, 14) & 0xFU);
  const auto number = [&](std::size_t place) { return at(frame, place) << 8 | at(frame, place + 1); };
  return number(ports) == port || number(ports + 2) == port;
}

// A head at 10.1.0.2, over a cable that may have a fault.
struct FarHead {
  explicit FarHead(const std::vector<std::string>& options = {}, CableFault fault = {}, const char* hostAddress = "10.1.0.1/24",
                   const std::string& address = "10.1.0.2", const char* mask = "/24") {
    networks.connect("cable", hostAddress, address + mask, std::move(fault));
    networks.onTheHeadsSide([&] {
      std::vector<std::string> words = {"--address", address, "--camera", "320x240", "--projector", "32x20"};
      words.insert(words.end(), options.begin(), options.end());
      head = std::make_unique<ChildProcess>(FRINGIX_HEAD, words);
      EXPECT_NE(head->waitForLine("ready:"), "");
    });
  }

  Networks networks;
  std::unique_ptr<ChildProcess> head;
};

void run(const std::function<void()>& body) {
  const Verdict verdict = inProcessWithNetworks(body);
  if (verdict == Verdict::notPermitted) GTEST_SKIP() << notPermitted;
  EXPECT_EQ(verdict, Verdict::passed);
}

void expect(const Outcome& outcome, const std::string& expected, const std::string& said) {
  EXPECT_EQ(troubles(outcome, expected), expected) << outcome.output << outcome.errors;
  EXPECT_EQ(outcome.exitCode, expected.find("red") == std::string::npos ? 0 : 1);
  EXPECT_NE(outcome.output.find(said), std::string::npos) << outcome.output;
}

TEST(FringixDoctorNetworksInRealTime, FindsNothingWrongWithAHealthyHead) {
  run([] {
    const FarHead far({"--trigger-every", "100ms"});
    expect(doctor("10.1.0.2 --wait 1s"), "", "head answers: 1001 at 10.1.0.2");
    expect(doctor(""), "", "TCP 44330 opens in");
  });
}

TEST(FringixDoctorNetworksInRealTime, NoAnswer) {
  run([] {
    Networks networks;
    networks.connect("cable", "10.1.0.1/24", "10.1.0.2/24");
    expect(doctor(""), "red search", "no head answers in any network");
    expect(doctor("10.1.0.2"), "red connection 10.1.0.2", "refuses the connection");
    expect(doctor("10.1.0.3"), "red connection 10.1.0.3", "No machine on cable has this address");
    expect(doctor("10.9.0.3"), "red connection 10.9.0.3", "sudo ip address add 10.9.0.1/24 dev cable");
  });
}

TEST(FringixDoctorNetworksInRealTime, WrongSubnet) {
  run([] {
    const FarHead far({}, {}, "192.168.0.1/24", "192.168.5.10", "/16");
    // A system that looks whether it would answer where a datagram comes from drops those from outside.
    ASSERT_EQ(std::system("for file in /proc/sys/net/ipv4/conf/*/rp_filter; do echo 0 >$file; done"), 0);
    expect(doctor(""), "red subnet 192.168.5.10", "sudo ip address add 192.168.5.1/24 dev cable");
    expect(doctor("192.168.5.10"), "red subnet 192.168.5.10", "outside 192.168.0.0/24");
  });
}

TEST(FringixDoctorNetworksInRealTime, AFirewallBetween) {
  run([] {
    const FarHead far({}, {[](std::string_view frame, bool) { return isOf(frame, tcp) && hasPort(frame, 44330); }});
    expect(doctor("10.1.0.2 --timeout 1s"), "red connection 10.1.0.2", "a firewall drops TCP 44330");
  });
  run([] {
    const FarHead far({}, {[](std::string_view frame, bool toHost) { return toHost && isOf(frame, udp); }});
    expect(doctor("10.1.0.2"), "yellow search 10.1.0.2", "does not answer the search");
    expect(doctor("10.1.0.2 --wait 100ms"), "yellow search 10.1.0.2, yellow triggers 10.1.0.2", "none came");
  });
}

TEST(FringixDoctorNetworksInRealTime, AFirewallOnThisMachine) {
  if (std::system("command -v nft >/dev/null") != 0) GTEST_SKIP() << "nft, of the package nftables, is not installed";
  bool hasTables = true;
  run([&] {
    const FarHead far({"--trigger-every", "100ms"});
    const std::string rules =
        "add table inet filter; add chain inet filter input { type filter hook input priority 0; policy drop; }; "
        "add rule inet filter input ct state established,related accept; add rule inet filter input iifname lo accept; "
        "add rule inet filter input udp dport 53 accept";
    hasTables = std::system(("nft '" + rules + "' 2>/dev/null").c_str()) == 0;
    if (!hasTables) return;
    const Outcome outcome = doctor("10.1.0.2");
    expect(outcome, "red firewall cable", "nftables drops answers to searches and triggers, UDP 44331, from 10.1.0.0/24");
    expect(doctor(""), "red firewall cable", "sudo nft insert rule inet filter input ip saddr 10.1.0.0/24 meta l4proto udp accept");
    // What it has told to do helps.
    ASSERT_EQ(std::system("nft insert rule inet filter input ip saddr 10.1.0.0/24 meta l4proto udp accept"), 0);
    expect(doctor("10.1.0.2 --wait 1s"), "", "nftables lets heads through");
  });
  if (!hasTables) GTEST_SKIP() << "the system has no tables for nft";
}

TEST(FringixDoctorNetworksInRealTime, ATakenPort) {
  run([] {
    const FarHead far;
    ChildProcess holder(TRIGGER_USER, {"41001", "take-port"});
    ASSERT_NE(holder.waitForLine("ready"), "");
    expect(doctor("10.1.0.2"), "red trigger port", "triggers cannot arrive");
  });
}

TEST(FringixDoctorNetworksInRealTime, ASlowLink) {
  run([] {
    const FarHead far({}, {{}, 250e3});
    expect(doctor("10.1.0.2"), "red picture 10.1.0.2", "It should be 50 Mbit/s at least");
  });
}

TEST(FringixDoctorNetworksInRealTime, ALossyLink) {
  run([] {
    const FarHead far({}, {[count = 0](std::string_view frame, bool) mutable { return isOf(frame, tcp) && ++count % 15 == 0; }});
    expect(doctor("10.1.0.2"), "red losses 10.1.0.2", "Packets get lost on the way");
  });
}

TEST(FringixDoctorNetworksInRealTime, ABusyHead) {
  run([] {
    const FarHead far({"--clients", "1"});
    const Device other("10.1.0.2");
    expect(doctor("10.1.0.2"), "red connection 10.1.0.2", "The head is busy: others have all its sessions");
  });
}

TEST(FringixDoctorNetworksInRealTime, AStrangerOnThePort) {
  run([] {
    Networks networks;
    networks.connect("cable", "10.1.0.1/24", "10.1.0.2/24");
    std::unique_ptr<ScriptedHead> stranger;
    networks.onTheHeadsSide([&] { stranger = std::make_unique<ScriptedHead>(Script{reply(text("SSH-2.0"))}, "10.1.0.2"); });
    expect(doctor("10.1.0.2"), "red connection 10.1.0.2", "Something else has this address and port");
  });
}

}  // namespace
}  // namespace fringix::test
