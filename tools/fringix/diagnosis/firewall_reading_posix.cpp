#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "diagnosis/firewall_reading.h"

namespace fringix::tool::diagnosis {
namespace {

struct Told {
  bool succeeded = false;
  std::string text;
};

// The tools of the system, in English and for a few seconds each.
Told ask(const std::string& command) {
  const std::string line = "PATH=\"$PATH:/usr/sbin:/sbin\" LC_ALL=C timeout 5 " + command + " 2>/dev/null";
  std::FILE* const pipe = popen(line.c_str(), "re");
  if (pipe == nullptr) return {};
  Told told;
  char part[4096];
  for (std::size_t size; (size = std::fread(part, 1, sizeof part, pipe)) > 0;) told.text.append(part, size);
  told.succeeded = pclose(pipe) == 0;
  return told;
}

bool isThere(const std::string& program) { return ask("sh -c 'command -v " + program + "'").succeeded; }

bool ufwIsSwitchedOn() {
  std::ifstream file("/etc/ufw/ufw.conf");
  for (std::string line; std::getline(file, line);) {
    if (line == "ENABLED=yes") return true;
  }
  return false;
}

// Each of the two makes the rules of the system below, which would say the same with more words.
bool addManaged(std::vector<Firewall>& firewalls) {
  if (ufwIsSwitchedOn()) {
    Told told = ask("ufw status verbose");
    firewalls.push_back({FirewallKind::ufw, told.succeeded, std::move(told.text)});
  } else if (isThere("firewall-cmd") && ask("firewall-cmd --state").succeeded) {
    const Told zone = ask("firewall-cmd --get-default-zone");
    const Told zones = ask("firewall-cmd --list-all-zones");
    firewalls.push_back({FirewallKind::firewalld, zone.succeeded && zones.succeeded, zone.text + zones.text});
  }
  return !firewalls.empty();
}

// Of iptables there is a version that has its rules below those of nft, and one that has them beside.
bool addRules(std::vector<Firewall>& firewalls, FirewallKind kind, const std::string& program, const std::string& command) {
  if (!isThere(program)) return false;
  Told told = ask(command);
  if (!told.succeeded || !told.text.empty()) firewalls.push_back({kind, told.succeeded, std::move(told.text), program});
  return true;
}

bool addIptables(std::vector<Firewall>& firewalls, const std::string& program) {
  return addRules(firewalls, FirewallKind::iptables, program, program + "-save -t filter");
}

}  // namespace

const System thisSystem = System::linux;

std::vector<Firewall> readFirewalls() {
  std::vector<Firewall> firewalls;
  if (addManaged(firewalls)) return firewalls;
  const bool hasNft = addRules(firewalls, FirewallKind::nftables, "nft", "nft list ruleset");
  if (!addIptables(firewalls, "iptables-legacy") && !hasNft) addIptables(firewalls, "iptables");
  return firewalls;
}

}  // namespace fringix::tool::diagnosis
