// JSON as the tool prints it, with members in the order in which they are given.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fringix::tool {

class Json {
 public:
  using Member = std::pair<std::string, Json>;

  static Json object(std::vector<Member> members);
  static Json array(std::vector<Json> elements);

  Json(std::nullptr_t) : text_("null") {}
  Json(std::same_as<bool> auto truth) : text_(truth ? "true" : "false") {}
  Json(std::integral auto number) requires(!std::same_as<decltype(number), bool>) : text_(std::to_string(number)) {}
  Json(double number);
  Json(std::string_view text);  // bytes that are no UTF-8 become U+FFFD
  Json(const std::string& text) : Json(std::string_view(text)) {}
  Json(const char* text) : Json(std::string_view(text)) {}

  void add(std::string name, Json value);  // to an object

  std::string line() const;                           // without a line end
  std::string indented(std::size_t depth = 0) const;  // one line for each value

 private:
  enum class Kind { scalar, object, array };

  Json(Kind kind, std::vector<Member> members) : kind_(kind), members_(std::move(members)) {}
  std::string inBrackets(const std::string& content) const;
  std::string nameOf(const Member& member, const char* colon) const;

  Kind kind_ = Kind::scalar;
  std::string text_;             // of a scalar, as it is printed
  std::vector<Member> members_;  // an array's have no names
};

}  // namespace fringix::tool
