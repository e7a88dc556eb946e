// JSON texts as trees. Those of the library that parses them take memory to go away, and end the process where there is none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::scan {

struct JsonValue {
  enum class Kind { nothing, truth, number, text, array, object };

  JsonValue() = default;
  JsonValue(std::int32_t value) : kind(Kind::number), number(value), integer(value) {}
  JsonValue(double value) : kind(Kind::number), number(value) {}
  JsonValue(std::string value) : kind(Kind::text), text(std::move(value)) {}
  JsonValue(std::vector<std::string> memberNames, std::vector<JsonValue> members)
      : kind(Kind::object), names(std::move(memberNames)), values(std::move(members)) {}

  template <class Entries>
  static JsonValue arrayOf(const Entries& entries) {
    JsonValue array;
    array.kind = Kind::array;
    array.values.assign(entries.begin(), entries.end());
    return array;
  }

  const JsonValue* find(std::string_view name) const noexcept;  // a member; of several with the name the last one

  Kind kind = Kind::nothing;
  double number = 0;
  std::optional<std::int64_t> integer{};  // of a number that is one; one that has no room here is the largest that has
  std::string text{};
  std::vector<std::string> names{};  // of an object, one for each value
  std::vector<JsonValue> values{};
};

// Throws std::runtime_error with what is wrong.
JsonValue parseJson(std::string_view text);

std::string dumpJson(const JsonValue& value);  // a line for each value, indented by 2

}  // namespace fringix::scan
