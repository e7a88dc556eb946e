#include "console/read_json.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace fringix::tool {
namespace {

using Parsed = nlohmann::json;

std::shared_ptr<const Parsed> parsed(std::string_view text) {
  try {
    return std::make_shared<const Parsed>(Parsed::parse(text));
  } catch (const Parsed::exception& error) {
    throw std::runtime_error(error.what());
  }
}

void require(bool right, const Parsed& value, const std::string& what) {
  if (!right) throw std::runtime_error("it has " + value.dump().substr(0, 40) + " in place of " + what);
}

}  // namespace

ReadJson::ReadJson(std::string_view text) : document_(parsed(text)), value_(document_.get()) {}

bool ReadJson::has(const char* name) const { return value_->contains(name); }

ReadJson ReadJson::at(const char* name) const {
  if (!has(name)) throw std::runtime_error("it has no \"" + std::string(name) + "\"");
  return {document_, value_->at(name)};
}

std::vector<ReadJson> ReadJson::elements() const {
  require(value_->is_array(), *value_, "an array");
  std::vector<ReadJson> elements;
  for (const Parsed& element : *value_) elements.push_back({document_, element});
  return elements;
}

bool ReadJson::isNull() const { return value_->is_null(); }

bool ReadJson::truth() const {
  require(value_->is_boolean(), *value_, "true or false");
  return value_->get<bool>();
}

double ReadJson::number() const {
  require(value_->is_number(), *value_, "a number");
  return value_->get<double>();
}

std::int64_t ReadJson::integer(std::int64_t low, std::int64_t high) const {
  const bool isInteger = value_->is_number_integer() && (!value_->is_number_unsigned() || value_->get<std::uint64_t>() <= INT64_MAX);
  const std::int64_t number = isInteger ? value_->get<std::int64_t>() : 0;
  require(isInteger && number >= low && number <= high, *value_,
          "a whole number from " + std::to_string(low) + " to " + std::to_string(high));
  return number;
}

std::string ReadJson::text() const {
  require(value_->is_string(), *value_, "a text");
  return value_->get<std::string>();
}

}  // namespace fringix::tool
