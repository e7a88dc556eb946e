#include "head/faults/parse_fault.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "head/faults/words.h"

namespace fringix::head {

namespace {

using std::chrono::milliseconds;

constexpr double most = 1e9;  // of whatever is counted

// An action, what number it takes behind which words, and what time. Null words: none; no words: the number follows at once.
struct Row {
  const char* phrase;
  FaultAction action;
  const char* numberBehind = nullptr;
  arguments::Limits limits = {};
  bool needsNumber = false;
  const char* timeBehind = nullptr;
  milliseconds usualTime{0};
};

const std::vector<Row>& rows() {
  static const std::vector<Row> table{
      {"stall", FaultAction::stall, "at byte", {0, most}, false, "for", withoutEnd},
      {"reset", FaultAction::reset, "at byte", {0, most}},
      {"cut", FaultAction::cut, "at byte", {0, most}},
      {"drip", FaultAction::drip, nullptr, {}, false, "every", milliseconds(10)},
      {"slow link", FaultAction::slowLink, "", {1, most}, true},
      {"wrong status", FaultAction::wrongStatus, "", {-2147483648.0, 2147483647.0}, true},
      {"wrong length", FaultAction::wrongLength, "", {-1e6, 1e6}, true},
      {"no picture", FaultAction::noPicture},
      {"frozen", FaultAction::frozen, nullptr, {}, false, "for", withoutEnd},
      {"restart", FaultAction::restart, nullptr, {}, false, "after", milliseconds(1000)},
      {"lost trigger", FaultAction::lostTrigger},
      {"doubled trigger", FaultAction::doubledTrigger},
  };
  return table;
}

std::string listed(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : &word == &words.back() ? " or " : ", ") + word;
  return list;
}

class FaultReader {
 public:
  FaultReader(const std::string& text, std::span<const std::string> commands) : words_(text), commands_(commands) { fault_.text = text; }

  Fault read() {
    if (words_.takeIf("random"))
      readRandom();
    else
      readUsual();
    if (!words_.atEnd()) words_.refuse("the end");
    return std::move(fault_);
  }

 private:
  void readRandom() {
    fault_.action = FaultAction::random;
    requireColon("random:SEED:RATE");
    fault_.number = words_.takeNumber({0, most});
    requireColon("random:SEED:RATE");
    fault_.rate = words_.takeShare();
  }

  void readUsual() {
    readWhen();
    if (words_.takeIf(",")) readTimes();
    requireColon(R"(":", or "," with once, N times or always,)");
    readAction();
  }

  void readWhen() {
    static const std::vector<std::string> known{"always", "at", "after", "random"};
    if (words_.takeIf("always")) return;
    if (words_.takeIf("at")) return readName("the name of a command or greeting", {});
    if (!words_.takeIf("after")) words_.refuse("always, at, after or random", known);
    fault_.times = 1;
    if (words_.atTime())
      fault_.delay = words_.takeTime();
    else
      readCounted();
  }

  void readCounted() {
    static const std::vector<std::string> known{"commands", "pictures", "triggers", "seconds", "ms", "min"};
    if (!words_.atNumber()) words_.refuse("a number");
    fault_.after = static_cast<std::uint64_t>(words_.takeNumber({0, most}));
    if (words_.takeIf("command") || words_.takeIf("commands")) return;
    if (words_.takeIf("picture") || words_.takeIf("pictures"))
      fault_.counted = Occasion::picture;
    else if (words_.takeIf("trigger") || words_.takeIf("triggers"))
      fault_.counted = Occasion::trigger;
    else
      readName("commands, pictures, triggers, ms, s, min or the name of a command", known);
  }

  void readName(const std::string& expected, std::vector<std::string> known) {
    const std::string& given = words_.word();
    const bool named = means(given, greetingName) ||
                       std::any_of(commands_.begin(), commands_.end(), [&](const std::string& command) { return means(given, command); });
    if (!named) {
      known.emplace_back(greetingName);
      for (const std::string& command : commands_) known.push_back(command.substr(command.find('_') + 1));
      words_.refuse(expected, known);
    }
    fault_.command = words_.take();
  }

  void readTimes() {
    static const std::vector<std::string> known{"once", "always", "times"};
    if (words_.takeIf("once")) {
      fault_.times = 1;
    } else if (words_.takeIf("always")) {
      fault_.times = everyTime;
    } else {
      if (!words_.atNumber()) words_.refuse("once, always, or a number with times", known);
      fault_.times = static_cast<std::uint64_t>(words_.takeNumber({1, most}));
      if (!words_.takeIf("times")) words_.refuse("times", known);
    }
  }

  void readAction() {
    const auto row = std::find_if(rows().begin(), rows().end(), [&](const Row& candidate) { return words_.takeIf(candidate.phrase); });
    if (row == rows().end()) refuseAction();
    fault_.action = row->action;
    fault_.time = row->usualTime;
    if (row->numberBehind != nullptr && (row->needsNumber || words_.takeIf(row->numberBehind))) {
      if (!words_.atNumber()) words_.refuse("a number");
      fault_.number = words_.takeNumber(row->limits);
    }
    if (row->action == FaultAction::slowLink) words_.takeIf("bytes/s");
    if (row->timeBehind == nullptr || !words_.takeIf(row->timeBehind)) return;
    if (!words_.atTime()) words_.refuse("a time such as 2 s or 500 ms");
    fault_.time = words_.takeTime();
  }

  // A first word that is right is told apart from its missing second one.
  [[noreturn]] void refuseAction() {
    std::vector<std::string> phrases;
    std::vector<std::string> seconds;
    std::vector<std::string> firsts;
    const std::string given = words_.word();
    for (const Row& row : rows()) {
      const std::string phrase = row.phrase;
      const std::string first = phrase.substr(0, phrase.find(' '));
      phrases.push_back(phrase);
      firsts.push_back(first);
      if (first == given) seconds.push_back(phrase.substr(first.size() + 1));
    }
    if (!seconds.empty()) words_.take();
    words_.refuse(listed(seconds.empty() ? phrases : seconds), seconds.empty() ? firsts : seconds);
  }

  void requireColon(const std::string& expected) {
    if (!words_.takeIf(":")) words_.refuse(expected);
  }

  Words words_;
  std::span<const std::string> commands_;
  Fault fault_;
};

}  // namespace

Fault parseFault(const std::string& text, std::span<const std::string> commands) { return FaultReader(text, commands).read(); }

}  // namespace fringix::head
