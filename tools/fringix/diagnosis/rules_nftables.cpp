#include <algorithm>
#include <functional>
#include <string_view>

#include "diagnosis/rule_chains.h"

namespace fringix::tool::diagnosis {
namespace {

using Words = std::vector<std::string_view>;

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// One rule of a listing, read from the left.
class RuleReader {
 public:
  RuleReader(Words words, const Packet& packet, const std::string& table) : words_(std::move(words)), packet_(packet), table_(table) {}

  Rule read() {
    while (next_ < words_.size()) readPart();
    return rule_;
  }

 private:
  std::string_view take() { return next_ < words_.size() ? words_[next_++] : std::string_view(); }
  bool takeIf(std::string_view word) {
    const bool found = next_ < words_.size() && words_[next_] == word;
    if (found) ++next_;
    return found;
  }
  void require(Truth truth) { rule_.matches = both(rule_.matches, truth); }
  void giveUp() {
    require(Truth::maybe);
    // A verdict may stand behind what is not understood.
    while (next_ < words_.size() && !isVerdict(words_[next_])) ++next_;
  }
  static bool isVerdict(std::string_view word) { return isOneOf(word, {"accept", "drop", "reject", "return", "jump", "goto"}); }

  // "x", "!= x", "{ x, y }"; sets with a name are not looked into.
  Truth matchValue(const std::function<bool(std::string_view)>& is) {
    const bool inverted = takeIf("!=");
    Truth truth = Truth::no;
    std::string_view word = take();
    if (word.starts_with('@')) return Truth::maybe;
    if (word != "{") {
      for (const std::string_view part : wordsOf(word, ",")) truth = is(part) ? Truth::yes : truth;
    } else {
      for (word = take(); !word.empty() && word != "}"; word = take()) {
        if (word.ends_with(',')) word.remove_suffix(1);
        if (is(word)) truth = Truth::yes;
      }
    }
    return inverted ? opposite(truth) : truth;
  }

  void readPart() {
    const std::string_view word = take();
    if (isOneOf(word, {"iifname", "iif"})) return require(matchValue([&](std::string_view name) { return isInterface(name); }));
    if (word == "udp" && takeIf("dport")) return require(matchValue([&](std::string_view port) { return isPort(port, packet_.port); }));
    if (word == "ip" && takeIf("saddr")) return require(matchValue([&](std::string_view text) { return isFrom(text); }));
    if ((word == "ip" && takeIf("protocol")) || (word == "meta" && takeIf("l4proto")))
      return require(matchValue([](std::string_view protocol) { return protocol == "udp" || protocol == "17"; }));
    if (word == "meta" && takeIf("nfproto")) return require(matchValue([](std::string_view family) { return family == "ipv4"; }));
    if (isOneOf(word, {"tcp", "ip6", "icmp", "icmpv6", "sctp", "dccp", "esp", "ah", "oif", "oifname"})) return notThis();
    if (word == "ct" && takeIf("state")) return readState();
    if (isOneOf(word, {"counter", "log", "comment", "packets", "bytes", "prefix", "level", "flags"})) return passOver(word);
    readVerdict(word);
  }

  void notThis() {
    require(Truth::no);
    next_ = words_.size();
  }

  void passOver(std::string_view word) {
    if (isOneOf(word, {"comment", "packets", "bytes", "prefix", "level", "flags"})) take();
  }

  // Nothing was asked that the packet answers: its connection is new.
  void readState() {
    if (!takeIf("vmap")) return require(matchValue([](std::string_view state) { return state == "new"; }));
    take();
    for (std::string_view word = take(); !word.empty() && word != "}"; word = take()) {
      const bool fits = word == "new";
      if (!takeIf(":")) continue;
      std::string_view verdict = take();
      if (verdict.ends_with(',')) verdict.remove_suffix(1);
      if (fits) return readVerdict(verdict);
    }
    require(Truth::no);
  }

  void readVerdict(std::string_view word) {
    if (word == "accept") rule_.verdict = Verdict::accept;
    if (isOneOf(word, {"drop", "reject"})) rule_.verdict = Verdict::drop;
    if (word == "return") rule_.verdict = Verdict::back;
    if (isOneOf(word, {"jump", "goto"})) {
      rule_.verdict = word == "jump" ? Verdict::jump : Verdict::leave;
      rule_.target = table_ + " " + std::string(take());
    }
    if (!isVerdict(word)) return giveUp();
    next_ = words_.size();  // "reject with ..."
  }

  bool isInterface(std::string_view name) const {
    if (name.ends_with('*')) return std::string_view(packet_.interface).starts_with(name.substr(0, name.size() - 1));
    return name == packet_.interface;
  }
  bool isFrom(std::string_view text) const {
    const Network network = parseNetwork(text);
    return text.find('-') == std::string::npos && (network.address != 0 || text == "0.0.0.0/0") && network.contains(packet_.from);
  }

  Words words_;
  const Packet& packet_;
  const std::string& table_;
  std::size_t next_ = 0;
  Rule rule_;
};

// Names that packets of IPv4 come through.
bool isOfIpv4(std::string_view family) { return family == "ip" || family == "inet"; }

void readBase(const Words& words, Chain& chain) {
  const auto after = [&](std::string_view word) {
    const auto found = std::find(words.begin(), words.end(), word);
    return found == words.end() || found + 1 == words.end() ? std::string_view() : *(found + 1);
  };
  std::string_view hook = after("hook");
  chain.isEntry = after("type") == "filter" && (hook == "input" || hook == "prerouting");
  chain.drops = after("policy").starts_with("drop");
}

}  // namespace

Judgement judgeByNftables(const std::string& ruleset, const Packet& packet) {
  Chains chains;
  std::string table;
  Chain* chain = nullptr;
  int depth = 0;
  for (const std::string_view line : linesOf(ruleset)) {
    const Words words = wordsOf(line);
    if (words.empty() || words.front().starts_with('#')) continue;
    const bool opens = words.back() == "{";
    if (words.front() == "table" && words.size() >= 3)
      table = isOfIpv4(words[1]) ? std::string(words[1]) + " " + std::string(words[2]) : "";
    if (words.front() == "chain" && words.size() >= 2 && !table.empty()) {
      chain = &chains[table + " " + std::string(words[1])];
    } else if (words.front() == "}") {
      if (--depth <= 1) chain = nullptr;
      continue;
    } else if (chain != nullptr && words.front() == "type") {
      readBase(words, *chain);
    } else if (chain != nullptr && !opens) {
      chain->rules.push_back(RuleReader(words, packet, table).read());
    }
    if (opens) ++depth;
  }
  return walk(chains);
}

}  // namespace fringix::tool::diagnosis
