#include "console/read_json.h"

#include <stdexcept>

namespace fringix::tool {
namespace {

using Kind = JsonValue::Kind;

[[noreturn]] void refuse(const JsonValue& value, const std::string& what) {
  throw std::runtime_error("it has " + jsonLine(value).substr(0, 40) + " in place of " + what);
}

}  // namespace

ReadJson::ReadJson(std::string_view text) : document_(std::make_shared<const JsonValue>(parseJson(text))), value_(document_.get()) {}

ReadJson ReadJson::at(const char* name) const {
  if (!has(name)) throw std::runtime_error("it has no \"" + std::string(name) + "\"");
  return {document_, *value_->find(name)};
}

const JsonValue& ReadJson::required(Kind kind, const char* what) const {
  if (value_->kind != kind) refuse(*value_, what);
  return *value_;
}

std::vector<ReadJson> ReadJson::elements() const {
  std::vector<ReadJson> elements;
  for (const JsonValue& element : required(Kind::array, "an array").values) elements.push_back({document_, element});
  return elements;
}

bool ReadJson::truth() const { return required(Kind::truth, "true or false").truth; }

double ReadJson::number() const { return required(Kind::number, "a number").number; }

std::int64_t ReadJson::integer(std::int64_t low, std::int64_t high) const {
  const bool fits = value_->kind == Kind::number && value_->integer && *value_->integer >= low && *value_->integer <= high;
  if (!fits) refuse(*value_, "a whole number from " + std::to_string(low) + " to " + std::to_string(high));
  return *value_->integer;
}

std::string ReadJson::text() const { return required(Kind::text, "a text").text; }

}  // namespace fringix::tool
