#include "diagnosis/rule_chains.h"

#include <algorithm>

namespace fringix::tool::diagnosis {
namespace {

using Words = std::vector<std::string_view>;

Truth from(bool truth) { return truth ? Truth::yes : Truth::no; }

bool isInList(std::string_view list, std::string_view wanted) {
  const Words parts = wordsOf(list, ",");
  return std::find(parts.begin(), parts.end(), wanted) != parts.end();
}

bool isInterface(std::string_view pattern, std::string_view name) {
  return pattern.ends_with('+') ? name.starts_with(pattern.substr(0, pattern.size() - 1)) : pattern == name;
}

// What one option asks of the packet.
Truth matches(std::string_view option, std::string_view value, const Packet& packet) {
  if (option == "-i") return from(isInterface(value, packet.interface));
  if (option == "-p") return from(value == "udp" || value == "all");
  if (option == "-s") return from(parseNetwork(value).contains(packet.from));
  if (option == "--dport" || option == "--dports") return from(hasPort(value, packet.port));
  if (option == "--ctstate" || option == "--state") return from(isInList(value, "NEW"));
  return Truth::maybe;
}

Rule readTarget(std::string_view option, std::string_view target, Truth truth) {
  if (target == "ACCEPT") return {truth, Verdict::accept, {}};
  if (target == "DROP" || target == "REJECT") return {truth, Verdict::drop, {}};
  if (target == "RETURN") return {truth, Verdict::back, {}};
  if (target == "LOG" || target == "NFLOG") return {truth, Verdict::none, {}};
  return {truth, option == "-j" ? Verdict::jump : Verdict::leave, std::string(target)};
}

// "-A INPUT -s 10.0.0.0/8 ! -i eth0 -p udp -m udp --dport 44331 -m comment --comment "..." -j DROP"
Rule readRule(const Words& words, const Packet& packet) {
  Truth truth = Truth::yes;
  for (std::size_t i = 2; i + 1 < words.size(); ++i) {
    const bool inverted = words[i] == "!";
    if (inverted && ++i + 1 >= words.size()) break;
    const std::string_view option = words[i];
    if (option == "-j" || option == "-g") return readTarget(option, words[i + 1], truth);
    if (!option.starts_with('-')) continue;
    ++i;
    if (option == "-m" || option == "--comment") continue;
    const Truth part = matches(option, words[i], packet);
    truth = both(truth, inverted ? opposite(part) : part);
  }
  return {truth, Verdict::none, {}};
}

}  // namespace

Judgement judgeByIptables(const std::string& rules, const Packet& packet) {
  Chains chains;
  for (const std::string_view line : linesOf(rules)) {
    const Words words = wordsOf(line);
    if (words.size() < 2) continue;
    if (words[0].starts_with(':')) {
      Chain& chain = chains[std::string(words[0].substr(1))];
      chain.isEntry = words[0] == ":INPUT";
      chain.drops = words[1] == "DROP";
    } else if (words[0] == "-A") {
      chains[std::string(words[1])].rules.push_back(readRule(words, packet));
    }
  }
  return walk(chains);
}

}  // namespace fringix::tool::diagnosis
