// JSON texts as trees. Those of the library that parses them take memory to go away, and end the process where there is none; and it is
// seen by one file only, because it is slow to compile.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fringix {

struct JsonValue {
  enum class Kind { nothing, truth, number, text, array, object };

  JsonValue() = default;
  JsonValue(bool isTrue);
  JsonValue(std::integral auto value) requires(!std::same_as<decltype(value), bool>)
      : kind(Kind::number), number(static_cast<double>(value)), integer(static_cast<std::int64_t>(value)) {}
  JsonValue(double value);
  JsonValue(std::string value);
  JsonValue(const char* value);
  JsonValue(std::vector<std::string> memberNames, std::vector<JsonValue> members);

  template <class Entries>
  static JsonValue arrayOf(const Entries& entries) {
    JsonValue array;
    array.kind = Kind::array;
    array.values.assign(entries.begin(), entries.end());
    return array;
  }

  const JsonValue* find(std::string_view name) const noexcept;  // a member; of several with the name the last one

  Kind kind = Kind::nothing;
  bool truth = false;
  double number = 0;
  std::optional<std::int64_t> integer{};  // of a number that is one; one that has no room here is the largest that has
  std::string text{};
  std::vector<std::string> names{};  // of an object, one for each value
  std::vector<JsonValue> values{};
};

// Throws std::runtime_error with what is wrong.
JsonValue parseJson(std::string_view text);

std::string jsonLine(const JsonValue& value);
std::string jsonLines(const JsonValue& value);  // one for each value, indented by 2

}  // namespace fringix
