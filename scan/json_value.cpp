#include "json_value.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace fringix::scan {

namespace {

using Library = nlohmann::ordered_json;
using Kind = JsonValue::Kind;

constexpr std::size_t deepest = 100;  // the tree goes away by calls of its own depth

// A message of the parser without its own prefix.
std::string reasonOf(const std::exception& error) {
  const std::string text = error.what();
  const auto end = text.find("] ");
  return end == std::string::npos ? text : text.substr(end + 2);
}

// Is told of the text from its beginning to its end. False ends the parsing.
class TreeBuilder {
 public:
  JsonValue take() { return std::move(root_); }
  const std::string& reason() const noexcept { return reason_; }

  bool null() { return add({}); }
  bool boolean(bool) { return add(Kind::truth); }
  bool number_integer(std::int64_t value) { return add(numberOf(static_cast<double>(value), value)); }
  bool number_unsigned(std::uint64_t value) {
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    return add(numberOf(static_cast<double>(value), static_cast<std::int64_t>(std::min(value, most))));
  }
  bool number_float(double value, const std::string&) { return add(value); }
  bool string(std::string& value) { return add(std::move(value)); }
  bool binary(std::vector<std::uint8_t>&) { return false; }
  bool start_object(std::size_t) { return open(Kind::object); }
  bool start_array(std::size_t) { return open(Kind::array); }
  bool key(std::string& name) {
    open_.back()->names.push_back(std::move(name));
    return true;
  }
  bool end_object() { return close(); }
  bool end_array() { return close(); }
  bool parse_error(std::size_t, const std::string&, const std::exception& error) {
    reason_ = reasonOf(error);
    return false;
  }

 private:
  static JsonValue numberOf(double number, std::int64_t integer) {
    JsonValue value(number);
    value.integer = integer;
    return value;
  }

  JsonValue& place(JsonValue value) {
    if (open_.empty()) return root_ = std::move(value);
    return open_.back()->values.emplace_back(std::move(value));
  }
  bool add(JsonValue value) {
    place(std::move(value));
    return true;
  }
  bool add(Kind kind) {
    JsonValue value;
    value.kind = kind;
    return add(std::move(value));
  }
  bool open(Kind kind) {
    if (open_.size() == deepest) {
      reason_ = "it is nested deeper than " + std::to_string(deepest) + " levels";
      return false;
    }
    JsonValue value;
    value.kind = kind;
    open_.push_back(&place(std::move(value)));
    return true;
  }
  bool close() {
    open_.pop_back();
    return true;
  }

  JsonValue root_;
  std::vector<JsonValue*> open_;  // none of them moves: what holds it gets no other value before it is closed
  std::string reason_;
};

std::string scalar(const JsonValue& value) {
  if (value.kind == Kind::text) return Library(value.text).dump();
  return value.integer ? Library(*value.integer).dump() : Library(value.number).dump();
}

void dump(const JsonValue& value, std::size_t indent, std::string& out) {
  const bool isObject = value.kind == Kind::object;
  if (!isObject && value.kind != Kind::array) {
    out += scalar(value);
    return;
  }
  out += isObject ? '{' : '[';
  for (std::size_t i = 0; i < value.values.size(); ++i) {
    out += (i == 0 ? "\n" : ",\n") + std::string(indent + 2, ' ');
    if (isObject) out += Library(value.names[i]).dump() + ": ";
    dump(value.values[i], indent + 2, out);
  }
  if (!value.values.empty()) out += "\n" + std::string(indent, ' ');
  out += isObject ? '}' : ']';
}

}  // namespace

const JsonValue* JsonValue::find(std::string_view name) const noexcept {
  const auto found = std::find(names.rbegin(), names.rend(), name);
  return found == names.rend() ? nullptr : &values[static_cast<std::size_t>(names.rend() - found) - 1];
}

JsonValue parseJson(std::string_view text) {
  TreeBuilder builder;
  if (!Library::sax_parse(text, &builder)) throw std::runtime_error(builder.reason());
  return builder.take();
}

std::string dumpJson(const JsonValue& value) {
  std::string text;
  dump(value, 0, text);
  return text;
}

}  // namespace fringix::scan
