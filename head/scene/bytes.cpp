#include "head/scene/bytes.h"

#include <charconv>
#include <string>

namespace fringix::head {

double numberFrom(std::string_view word) {
  double number = 0;
  const char* begin = word.data() + (word.starts_with('+') ? 1 : 0);
  const auto [end, error] = std::from_chars(begin, word.data() + word.size(), number);
  if (word.empty()) throw std::runtime_error("it ends too early");
  if (error != std::errc{} || end != word.data() + word.size()) throw std::runtime_error("\"" + std::string(word) + "\" is no number");
  return number;
}

}  // namespace fringix::head
