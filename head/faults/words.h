// A text for people, word by word, and complaints that say where in it something is wrong.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "arguments/argument.h"

namespace fringix::head {

// Words are separated by blanks; a colon and a comma are words of their own. What takes a word throws arguments::UsageError when it is
// another one than is expected.
class Words {
 public:
  explicit Words(std::string text);

  bool atEnd() const { return next_ == words_.size(); }
  const std::string& word() const;       // the next one; empty at the end
  bool takeIf(std::string_view phrase);  // all of its words, or none
  std::string take();

  bool atNumber() const;  // a number without a unit of time behind it
  bool atTime() const;
  std::int64_t takeNumber(const arguments::Limits& limits);
  double takeShare();                    // more than 0, at most 1
  std::chrono::milliseconds takeTime();  // "2s", "2 s", "500ms"

  // `expected` completes "expected ...". `known` are the words that a mistyped one may have been meant to be.
  [[noreturn]] void refuse(const std::string& expected, std::span<const std::string> known = {}) const;

 private:
  struct Word {
    std::string text;
    std::size_t place;  // in the text, from 1
  };

  const std::string& wordAt(std::size_t index) const;
  template <class Read>
  auto convert(std::size_t count, Read read);

  std::string text_;
  std::vector<Word> words_;
  std::size_t next_ = 0;
};

}  // namespace fringix::head
