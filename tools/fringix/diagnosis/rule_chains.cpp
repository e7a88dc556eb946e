#include "diagnosis/rule_chains.h"

#include <algorithm>
#include <charconv>

namespace fringix::tool::diagnosis {
namespace {

constexpr int deepest = 32;  // a circle of chains, which the systems refuse, ends there

enum class End { open, accepted, dropped };

class Walk {
 public:
  explicit Walk(const Chains& chains) : chains_(chains) {}

  End through(const Chain& chain, int depth = 0) {
    for (const Rule& rule : chain.rules) {
      if (rule.matches == Truth::no || rule.verdict == Verdict::none) continue;
      if (rule.matches == Truth::maybe) {
        unsure_ = true;
        continue;
      }
      if (rule.verdict == Verdict::back) return End::open;
      const End end = follow(rule, depth);
      if (end != End::open || rule.verdict == Verdict::leave) return end;
    }
    return End::open;
  }

  bool unsure() const { return unsure_; }

 private:
  End follow(const Rule& rule, int depth) {
    if (rule.verdict == Verdict::accept) return End::accepted;
    if (rule.verdict == Verdict::drop) return End::dropped;
    const auto target = chains_.find(rule.target);
    if (target != chains_.end() && depth < deepest) return through(target->second, depth + 1);
    unsure_ = true;
    return End::open;
  }

  const Chains& chains_;
  bool unsure_ = false;
};

bool takeNumber(std::string_view text, unsigned& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc{} && end == text.data() + text.size();
}

}  // namespace

Judgement walk(const Chains& chains) {
  Judgement judgement{Fate::accepted, {}};
  for (const auto& [name, chain] : chains) {
    if (!chain.isEntry) continue;
    Walk walk(chains);
    End end = walk.through(chain);
    if (end == End::open) end = chain.drops ? End::dropped : End::accepted;
    if (walk.unsure())
      judgement.fate = Fate::unknown;
    else if (end == End::dropped)
      return {Fate::dropped, name};
  }
  return judgement;
}

std::vector<std::string_view> wordsOf(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t begin = text.find_first_not_of(separators);
    if (begin == std::string::npos) break;
    const bool quoted = text[begin] == '"';
    const std::size_t end = std::min(quoted ? text.find('"', begin + 1) : text.find_first_of(separators, begin), text.size());
    words.push_back(text.substr(begin + (quoted ? 1 : 0), end - begin - (quoted ? 1 : 0)));
    text.remove_prefix(std::min(text.size(), end + 1));
  }
  return words;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    if (lines.back().ends_with('\r')) lines.back().remove_suffix(1);
    text.remove_prefix(std::min(text.size(), end + 1));
  }
  return lines;
}

bool isPort(std::string_view text, std::uint16_t port) {
  const std::size_t dash = text.find_first_of("-:");
  unsigned low = 0;
  if (!takeNumber(text.substr(0, dash), low)) return false;
  unsigned high = low;
  if (dash != std::string::npos && !takeNumber(text.substr(dash + 1), high)) return false;
  return low <= port && port <= high;
}

bool hasPort(std::string_view list, std::uint16_t port) {
  const std::vector<std::string_view> parts = wordsOf(list, ",");
  return std::any_of(parts.begin(), parts.end(), [&](std::string_view part) { return isPort(part, port); });
}

}  // namespace fringix::tool::diagnosis
