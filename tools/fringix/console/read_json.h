// JSON that was read: a value and what is in it. The parser is seen by one file only: it is slow to compile.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fringix::tool {

// Everything throws std::runtime_error, with the reason, where the text is no JSON or is not what is asked for.
class ReadJson {
 public:
  explicit ReadJson(std::string_view text);

  ReadJson at(const char* name) const;  // a member of an object
  bool has(const char* name) const;
  std::vector<ReadJson> elements() const;  // of an array

  bool isNull() const;
  bool truth() const;
  double number() const;
  std::int64_t integer(std::int64_t low, std::int64_t high) const;  // one within these, both included
  std::string text() const;

 private:
  ReadJson(std::shared_ptr<const nlohmann::json> document, const nlohmann::json& value) : document_(std::move(document)), value_(&value) {}

  std::shared_ptr<const nlohmann::json> document_;
  const nlohmann::json* value_;  // in it
};

}  // namespace fringix::tool
