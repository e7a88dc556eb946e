// JSON that programs print, for tests. The parser is seen by one file only: it is slow to compile.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fringix::test {

class Json {
 public:
  explicit Json(const std::string& text);  // throws std::exception when the text is no JSON

  // Places are pointers such as "/heads/0/address"; one that does not exist throws std::exception.
  Json at(const std::string& place) const;
  Json without(const std::string& place) const;
  bool has(const std::string& place) const;

  std::vector<std::string> names() const;  // of an object's members
  std::size_t size() const;
  double number() const;
  std::string text() const;  // of a string
  const std::string& dump() const noexcept { return canonical_; }

  bool operator==(const Json&) const = default;

 private:
  std::string canonical_;  // one line, names in order
};

std::ostream& operator<<(std::ostream& stream, const Json& json);

}  // namespace fringix::test
