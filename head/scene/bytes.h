// Numbers from the bytes of a file.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace fringix::head {

// Takes a number off the front of `bytes`. Throws std::runtime_error when there are too few.
template <class Number>
Number takeNumber(std::string_view& bytes, std::endian order) {
  std::array<char, sizeof(Number)> raw;
  if (bytes.size() < raw.size()) throw std::runtime_error("it ends too early");
  std::copy_n(bytes.begin(), raw.size(), raw.begin());
  bytes.remove_prefix(raw.size());
  if (order != std::endian::native) std::reverse(raw.begin(), raw.end());
  return std::bit_cast<Number>(raw);
}

// Takes a word off the front of `text`, and the white space before it; empty at the end.
inline std::string_view takeWord(std::string_view& text) {
  constexpr std::string_view space = " \t\r\n\v\f";
  text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(space));
  text.remove_prefix(word.size());
  return word;
}

// What a word says as a number. Throws std::runtime_error when it is none.
double numberFrom(std::string_view word);

}  // namespace fringix::head
