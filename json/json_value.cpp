#include "json/json_value.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace fringix {

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
  bool boolean(bool value) { return add(value); }
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
    JsonValue& room = open_.empty() ? root_ : open_.back()->values.emplace_back();
    return room = std::move(value);
  }
  bool add(JsonValue value) {
    place(std::move(value));
    return true;
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

// Writes values one below the other, each indented by two for each value that it is in, or all of them in one line.
class Writer {
 public:
  explicit Writer(bool inLines) : inLines_(inLines), colon_(inLines ? ": " : ":") {}

  std::string take() { return std::move(text_); }

  void write(const JsonValue& value) {
    switch (value.kind) {
      case Kind::object:
        return writeValues(value, '{', '}');
      case Kind::array:
        return writeValues(value, '[', ']');
      case Kind::nothing:
        return writeScalar(nullptr);
      case Kind::truth:
        return writeScalar(value.truth);
      case Kind::number:
        return value.integer ? writeScalar(*value.integer) : writeScalar(value.number);
      case Kind::text:
        return writeScalar(value.text);
    }
  }

 private:
  void writeScalar(const Library& value) { text_ += value.dump(); }

  void writeValues(const JsonValue& value, char opening, char closing) {
    text_ += opening;
    ++depth_;
    for (std::size_t i = 0; i < value.values.size(); ++i) {
      if (i > 0) text_ += ',';
      startLine();
      if (value.kind == Kind::object) {
        writeScalar(value.names[i]);
        text_ += colon_;
      }
      write(value.values[i]);
    }
    --depth_;
    if (!value.values.empty()) startLine();
    text_ += closing;
  }

  void startLine() {
    if (inLines_) text_.append(1, '\n').append(2 * depth_, ' ');
  }

  const bool inLines_;
  const char* const colon_;
  std::size_t depth_ = 0;
  std::string text_;
};

std::string written(const JsonValue& value, bool inLines) {
  Writer writer(inLines);
  writer.write(value);
  return writer.take();
}

}  // namespace

JsonValue::JsonValue(bool isTrue) : kind(Kind::truth), truth(isTrue) {}

JsonValue::JsonValue(double value) : kind(Kind::number), number(value) {}

JsonValue::JsonValue(std::string value) : kind(Kind::text), text(std::move(value)) {}

JsonValue::JsonValue(const char* value) : JsonValue(std::string(value)) {}

JsonValue::JsonValue(std::vector<std::string> memberNames, std::vector<JsonValue> members)
    : kind(Kind::object), names(std::move(memberNames)), values(std::move(members)) {}

const JsonValue* JsonValue::find(std::string_view name) const noexcept {
  for (std::size_t i = names.size(); i > 0; --i) {
    if (names[i - 1] == name) return &values[i - 1];
  }
  return nullptr;
}

JsonValue parseJson(std::string_view text) {
  TreeBuilder builder;
  if (!Library::sax_parse(text, &builder)) throw std::runtime_error(builder.reason());
  return builder.take();
}

std::string jsonLine(const JsonValue& value) { return written(value, false); }

std::string jsonLines(const JsonValue& value) { return written(value, true); }

}  // namespace fringix
