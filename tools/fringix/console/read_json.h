// JSON that was read: a value and what is in it, or what was expected in its place.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/json_value.h"

namespace fringix::tool {

// Everything throws std::runtime_error, with the reason, where the text is no JSON or is not what is asked for.
class ReadJson {
 public:
  explicit ReadJson(std::string_view text);

  ReadJson at(const char* name) const;  // a member of an object
  bool has(const char* name) const { return value_->find(name) != nullptr; }
  std::vector<ReadJson> elements() const;  // of an array

  bool isNull() const { return value_->kind == JsonValue::Kind::nothing; }
  bool truth() const;
  double number() const;
  std::int64_t integer(std::int64_t low, std::int64_t high) const;  // one within these, both included
  std::string text() const;

 private:
  ReadJson(std::shared_ptr<const JsonValue> document, const JsonValue& value) : document_(std::move(document)), value_(&value) {}

  const JsonValue& required(JsonValue::Kind kind, const char* what) const;

  std::shared_ptr<const JsonValue> document_;
  const JsonValue* value_;  // in it
};

}  // namespace fringix::tool
