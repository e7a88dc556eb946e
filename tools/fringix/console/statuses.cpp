#include "console/statuses.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <string_view>

#include "console/embedded.h"

namespace fringix::tool {
namespace {

constexpr std::string_view sectionMark = "\n## ";

// Marks of code are for the page; a terminal shows names as they are.
std::string plain(std::string_view markdown) {
  std::string text(markdown);
  std::erase(text, '`');
  const std::size_t end = text.find_last_not_of('\n');
  return text.substr(text.find_first_not_of('\n'), end + 1 - text.find_first_not_of('\n'));
}

// "-10 SLCONNECTION_ERROR", an empty line, and the text.
StatusText parseSection(std::string_view section) {
  const std::size_t title = section.find('\n');
  const std::size_t blank = section.find(' ');
  return {std::string(section.substr(0, blank)), std::string(section.substr(blank + 1, title - blank - 1)), plain(section.substr(title))};
}

// The last section is of all numbers that have none of their own.
std::vector<StatusText> parsePage() {
  std::vector<StatusText> sections;
  std::string_view page = statusPage();
  for (std::size_t mark = page.find(sectionMark); mark != std::string::npos; mark = page.find(sectionMark)) {
    page.remove_prefix(mark + sectionMark.size());
    sections.push_back(parseSection(page.substr(0, page.find(sectionMark))));
  }
  return sections;
}

bool isNumber(const std::string& word) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return error == std::errc() && end == word.data() + word.size();
}

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
  return text;
}

// The names of scan.h stand in for those of fringix.h where both have a status.
std::string libraryName(const std::string& word) {
  std::string name = upperCase(word);
  if (name == "SLSCAN_OKAY") return "SLALL_OKAY";
  if (name == "SLSCAN_BAD_PARAMETER" || name == "SLSCAN_SYSTEM_ERROR") return "SL" + name.substr(7);
  return name;
}

}  // namespace

std::vector<StatusText> statusTexts() {
  std::vector<StatusText> texts = parsePage();
  texts.pop_back();
  return texts;
}

std::optional<StatusText> findStatus(const std::string& codeOrName) {
  for (StatusText& text : statusTexts()) {
    if (text.code == codeOrName || text.code == "-" + codeOrName || text.name == libraryName(codeOrName)) return std::move(text);
  }
  if (!isNumber(codeOrName)) return std::nullopt;
  return StatusText{codeOrName, "", parsePage().back().text};
}

// Lines such as "  SLDevAlloc @1" below "EXPORTS".
std::vector<std::string> callNames() {
  std::vector<std::string> names;
  const std::string_view list = exportList();
  std::istringstream words{std::string(list.substr(list.find("EXPORTS") + 7))};
  for (std::string word; words >> word;) {
    if (!word.starts_with('@')) names.push_back(word);
  }
  return names;
}

}  // namespace fringix::tool
