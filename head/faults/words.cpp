#include "head/faults/words.h"

#include <algorithm>
#include <utility>

#include "arguments/duration.h"
#include "arguments/number.h"
#include "arguments/suggestion.h"
#include "arguments/usage_error.h"

namespace fringix::head {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view marks = ":,";

bool isMark(char character) { return marks.find(character) != std::string_view::npos; }
bool isBlank(char character) { return blanks.find(character) != std::string_view::npos; }
bool isDigit(char character) { return character >= '0' && character <= '9'; }

// As durations have it; empty for what is no unit of time.
std::string unitOf(const std::string& word) {
  if (word == "second" || word == "seconds") return "s";
  if (word == "minute" || word == "minutes") return "min";
  return word == "ms" || word == "s" || word == "min" ? word : "";
}

bool isNumber(const std::string& word) {
  const std::size_t sign = !word.empty() && (word[0] == '+' || word[0] == '-') ? 1 : 0;
  return word.size() > sign && std::all_of(word.begin() + static_cast<std::ptrdiff_t>(sign), word.end(),
                                           [](char character) { return isDigit(character) || character == '.'; });
}

}  // namespace

Words::Words(std::string text) : text_(std::move(text)) {
  for (std::size_t i = 0; i < text_.size();) {
    const std::size_t begin = i;
    while (i < text_.size() && !isBlank(text_[i]) && !isMark(text_[i])) ++i;
    if (i == begin && isMark(text_[i])) ++i;
    if (i > begin) words_.push_back({text_.substr(begin, i - begin), begin + 1});
    while (i < text_.size() && isBlank(text_[i])) ++i;
  }
}

const std::string& Words::wordAt(std::size_t index) const {
  static const std::string none;
  return index < words_.size() ? words_[index].text : none;
}

const std::string& Words::word() const { return wordAt(next_); }

bool Words::takeIf(std::string_view phrase) {
  std::size_t index = next_;
  for (const auto& wanted : Words(std::string(phrase)).words_) {
    if (wordAt(index++) != wanted.text) return false;
  }
  next_ = index;
  return true;
}

std::string Words::take() { return atEnd() ? "" : words_[next_++].text; }

bool Words::atNumber() const { return isNumber(word()) && unitOf(wordAt(next_ + 1)).empty(); }

bool Words::atTime() const { return !word().empty() && isDigit(word()[0]) && !atNumber(); }

// Takes so many words and reads a value from them joined.
template <class Read>
auto Words::convert(std::size_t count, Read read) {
  if (atEnd()) refuse("a number");
  const std::size_t place = words_[next_].place;
  std::string joined = take();
  for (std::size_t i = 1; i < count; ++i) joined += unitOf(take());
  try {
    return read(joined);
  } catch (const arguments::UsageError& error) {
    throw arguments::UsageError("\"" + text_ + "\": " + error.what() + " (character " + std::to_string(place) + ")");
  }
}

std::int64_t Words::takeNumber(const arguments::Limits& limits) {
  return convert(
      1, [&](const std::string& word) { return arguments::toNumber<std::int64_t>(word.starts_with('+') ? word.substr(1) : word, limits); });
}

double Words::takeShare() {
  return convert(1, [](const std::string& word) {
    const auto share = arguments::toNumber<double>(word, {0, 1});
    if (share > 0) return share;
    throw arguments::UsageError("a rate of 0 strikes nothing");
  });
}

std::chrono::milliseconds Words::takeTime() {
  const bool apart = isNumber(word()) && !unitOf(wordAt(next_ + 1)).empty();
  return convert(apart ? 2 : 1, [](const std::string& words) { return arguments::toDuration(words); });
}

void Words::refuse(const std::string& expected, std::span<const std::string> known) const {
  std::string complaint = "\"" + text_ + "\": expected " + expected;
  if (atEnd()) throw arguments::UsageError(complaint + " at the end");
  complaint += " at character " + std::to_string(words_[next_].place) + ", not \"" + word() + "\"";
  throw arguments::UsageError(complaint + arguments::didYouMean(word(), known));
}

}  // namespace fringix::head
