#include "head/program/console.h"

#include <charconv>
#include <iterator>
#include <stdexcept>

#include "arguments/usage_error.h"
#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"

namespace fringix::head {

namespace {

std::string lineOf(const HeadServer& head, const std::string& text) {
  return "head " + std::to_string(head.model().settings().serial) + "  " + text + "\n";
}

std::string trigger(HeadServer& head) {
  const std::size_t hosts = head.raiseTrigger();
  const std::string told = hosts == 0   ? "trigger, but no host to tell"
                           : hosts == 1 ? "trigger"
                                        : "trigger to " + std::to_string(hosts) + " hosts";
  return lineOf(head, told);
}

std::string help(std::size_t heads) {
  const std::string all = heads == 1 ? "raises a GPIO trigger" : "raises a GPIO trigger of each head";
  const std::string one = heads == 1 ? "" : ", \"trigger N\" of the N-th head, 1 to " + std::to_string(heads);
  return "\"trigger\" " + all + one + "; \"scene NAME\" puts another scene before " + (heads == 1 ? "it" : "all of them") +
         "; \"fault FAULT\" makes " + (heads == 1 ? "it" : "all of them") +
         " do something wrong, \"fault none\" ends that, \"fault list\" tells what is set\n";
}

// A wrong name is wrong for the first head already, so that all heads always have the same scene.
std::string changeScene(std::list<HeadServer>& heads, const std::string& name) {
  std::string answer;
  try {
    for (HeadServer& head : heads) {
      head.model().setScene(name);
      answer += lineOf(head, "scene " + name);
    }
  } catch (const std::runtime_error& error) {
    answer += std::string(error.what()) + "\n";
  }
  return answer;
}

std::string struck(std::uint64_t times) {
  if (times == 0) return "not struck yet";
  return times == 1 ? "struck once" : "struck " + std::to_string(times) + " times";
}

std::string tellFaults(HeadServer& head) {
  const auto entries = head.faults().entries();
  if (entries.empty()) return lineOf(head, "no fault");
  std::string lines;
  for (const auto& entry : entries) lines += lineOf(head, "fault " + entry.fault.text + " (" + struck(entry.struck) + ")");
  return lines;
}

std::string endFaults(HeadServer& head) {
  head.faults().clear();
  return lineOf(head, "no fault");
}

std::string addFault(HeadServer& head, const Fault& fault) {
  head.faults().add(fault);
  return lineOf(head, "fault " + fault.text);
}

// A fault to add to all heads, "none" or "list". What is none is told in a line that begins with "fault: ".
std::string obeyFault(const std::string& rest, std::list<HeadServer>& heads) {
  std::string answer;
  try {
    if (rest == "none" || rest == "list") {
      for (HeadServer& head : heads) answer += rest == "none" ? endFaults(head) : tellFaults(head);
    } else {
      const Fault fault = parseFault(rest, commandNames());
      for (HeadServer& head : heads) answer += addFault(head, fault);
    }
  } catch (const arguments::UsageError& error) {
    answer = std::string("fault: ") + error.what() + "\n";
  }
  return answer;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == std::string_view::npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

// 0 for what is no number.
std::size_t parseNumber(std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc{} && end == text.data() + text.size() ? number : 0;
}

}  // namespace

std::string triggerAll(std::list<HeadServer>& heads) {
  std::string answer;
  for (HeadServer& head : heads) answer += trigger(head);
  return answer;
}

std::string obey(std::string_view line, std::list<HeadServer>& heads) {
  const std::string_view command = trimmed(line);
  const std::string_view word = command.substr(0, command.find_first_of(" \t"));
  const std::string_view rest = trimmed(command.substr(word.size()));
  if (command.empty()) return "";
  if (word == "scene" && !rest.empty()) return changeScene(heads, std::string(rest));
  if (word == "fault" && !rest.empty()) return obeyFault(std::string(rest), heads);
  if (command == "trigger") return triggerAll(heads);
  const std::size_t number = word == "trigger" ? parseNumber(rest) : 0;
  if (number == 0 || number > heads.size()) return help(heads.size());
  return trigger(*std::next(heads.begin(), static_cast<std::ptrdiff_t>(number - 1)));
}

}  // namespace fringix::head
