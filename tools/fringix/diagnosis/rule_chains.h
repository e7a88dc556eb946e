// Chains of rules, as nftables and iptables have them, for one packet.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/rules.h"

namespace fringix::tool::diagnosis {

enum class Truth { no, maybe, yes };

inline Truth both(Truth a, Truth b) { return a < b ? a : b; }
inline Truth opposite(Truth truth) { return truth == Truth::maybe ? truth : truth == Truth::yes ? Truth::no : Truth::yes; }

enum class Verdict { none, accept, drop, back, jump, leave };  // `leave` is a jump without return

struct Rule {
  Truth matches = Truth::yes;
  Verdict verdict = Verdict::none;
  std::string target;  // of a jump
};

struct Chain {
  std::vector<Rule> rules;
  bool drops = false;    // what no rule decides
  bool isEntry = false;  // packets come to it from outside
};

using Chains = std::map<std::string, Chain, std::less<>>;

// Where a packet ends that comes to all entries one after the other: each of them may drop it.
Judgement walk(const Chains& chains);

std::vector<std::string_view> wordsOf(std::string_view text, std::string_view separators = " \t");
std::vector<std::string_view> linesOf(std::string_view text);
bool isPort(std::string_view text, std::uint16_t port);   // "44331", "44330-44332" or "44330:44332"
bool hasPort(std::string_view list, std::uint16_t port);  // "53,44330:44332"

}  // namespace fringix::tool::diagnosis
