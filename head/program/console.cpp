#include "head/program/console.h"

#include <charconv>
#include <iterator>
#include <stdexcept>

namespace fringix::head {

namespace {

std::string trigger(const HeadServer& head) {
  const std::size_t hosts = head.raiseTrigger();
  const std::string told = hosts == 0   ? "trigger, but no host to tell"
                           : hosts == 1 ? "trigger"
                                        : "trigger to " + std::to_string(hosts) + " hosts";
  return "head " + std::to_string(head.model().settings().serial) + "  " + told + "\n";
}

std::string help(std::size_t heads) {
  const std::string all = heads == 1 ? "raises a GPIO trigger" : "raises a GPIO trigger of each head";
  const std::string one = heads == 1 ? "" : ", \"trigger N\" of the N-th head, 1 to " + std::to_string(heads);
  return "\"trigger\" " + all + one + "; \"scene NAME\" puts another scene before " + (heads == 1 ? "it" : "all of them") + "\n";
}

// A wrong name is wrong for the first head already, so that all heads always have the same scene.
std::string changeScene(std::list<HeadServer>& heads, const std::string& name) {
  std::string answer;
  try {
    for (HeadServer& head : heads) {
      head.model().setScene(name);
      answer += "head " + std::to_string(head.model().settings().serial) + "  scene " + name + "\n";
    }
  } catch (const std::runtime_error& error) {
    answer += std::string(error.what()) + "\n";
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

std::string triggerAll(const std::list<HeadServer>& heads) {
  std::string answer;
  for (const HeadServer& head : heads) answer += trigger(head);
  return answer;
}

std::string obey(std::string_view line, std::list<HeadServer>& heads) {
  const std::string_view command = trimmed(line);
  const std::string_view word = command.substr(0, command.find_first_of(" \t"));
  const std::string_view rest = trimmed(command.substr(word.size()));
  if (command.empty()) return "";
  if (word == "scene" && !rest.empty()) return changeScene(heads, std::string(rest));
  if (command == "trigger") return triggerAll(heads);
  const std::size_t number = word == "trigger" ? parseNumber(rest) : 0;
  if (number == 0 || number > heads.size()) return help(heads.size());
  return trigger(*std::next(heads.begin(), static_cast<std::ptrdiff_t>(number - 1)));
}

}  // namespace fringix::head
