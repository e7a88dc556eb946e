#include "console/json.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>

namespace fringix::tool {
namespace {

std::size_t lengthOf(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first >= 0xE0 && first <= 0xEF) return 3;
  return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

// The number of bytes of the character that a text begins with; 0: it is none. Overlong forms and halves of pairs are none.
std::size_t characterLength(std::string_view text) {
  constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t length = lengthOf(byte(0));
  if (length <= 1) return length;
  if (length > text.size()) return 0;
  std::uint32_t code = byte(0) & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return 0;
    code = code << 6 | (byte(i) & 0x3FU);
  }
  const bool halfOfPair = code >= 0xD800 && code <= 0xDFFF;
  return code < least[length] || code > 0x10FFFF || halfOfPair ? 0 : length;
}

std::string escaped(char character) {
  switch (character) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    default:
      return static_cast<unsigned char>(character) < 0x20 ? fmt::format("\\u{:04x}", character) : std::string(1, character);
  }
}

std::string inQuotes(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0) result += "\xEF\xBF\xBD";
    if (length == 1) result += escaped(text.front());
    if (length > 1) result += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result + '"';
}

}  // namespace

Json Json::object(std::vector<Member> members) { return {Kind::object, std::move(members)}; }

Json Json::array(std::vector<Json> elements) {
  std::vector<Member> members;
  for (Json& element : elements) members.emplace_back("", std::move(element));
  return {Kind::array, std::move(members)};
}

Json::Json(double number) : text_(std::isfinite(number) ? fmt::format("{}", number) : "null") {}

Json::Json(std::string_view text) : text_(inQuotes(text)) {}

void Json::add(std::string name, Json value) { members_.emplace_back(std::move(name), std::move(value)); }

std::string Json::inBrackets(const std::string& content) const { return kind_ == Kind::object ? "{" + content + "}" : "[" + content + "]"; }

std::string Json::nameOf(const Member& member, const char* colon) const {
  return kind_ == Kind::object ? inQuotes(member.first) + colon : "";
}

std::string Json::line() const {
  if (kind_ == Kind::scalar) return text_;
  std::string content;
  for (const Member& member : members_) content += (content.empty() ? "" : ",") + nameOf(member, ":") + member.second.line();
  return inBrackets(content);
}

std::string Json::indented(std::size_t depth) const {
  if (kind_ == Kind::scalar) return text_;
  if (members_.empty()) return inBrackets("");
  const std::string lineStart = "\n" + std::string(2 * (depth + 1), ' ');
  std::string content;
  for (const Member& member : members_)
    content += (content.empty() ? "" : ",") + lineStart + nameOf(member, ": ") + member.second.indented(depth + 1);
  return inBrackets(content + "\n" + std::string(2 * depth, ' '));
}

}  // namespace fringix::tool
