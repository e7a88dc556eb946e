#include "arguments/argument.h"

#include <fmt/format.h>

#include <sstream>
#include <type_traits>
#include <utility>

#include "arguments/number.h"
#include "arguments/usage_error.h"

namespace fringix::arguments {
namespace {

// One value or a list, as the target asks for.
struct Taker {
  const ArgumentFacts& facts;
  const Check& check;
  const std::vector<std::string>& values;

  std::string text(const std::string& value) const {
    const std::string complaint = check ? check(value) : "";
    return complaint.empty() ? value : throw UsageError(complaint);
  }

  template <class Number>
  Number number(const std::string& value) const {
    return toNumber<Number>(value, facts.limits);
  }

  void operator()(std::string* target) const { *target = text(values.back()); }
  void operator()(bool* target) const { *target = true; }
  void operator()(const TakeText& target) const { target(text(values.back())); }
  void operator()(const TakeNumber& target) const { target(number<std::int64_t>(values.back())); }
  void operator()(const TakeFlag& target) const { target(); }

  template <class Number>
  void operator()(Number* target) const {
    *target = number<Number>(values.back());
  }

  void operator()(std::optional<std::uint32_t>* target) const { *target = number<std::uint32_t>(values.back()); }

  void operator()(std::vector<std::string>* target) const {
    target->clear();
    for (const std::string& value : values) target->push_back(text(value));
  }

  template <class Number>
  void operator()(std::vector<Number>* target) const {
    target->clear();
    for (const std::string& value : values) target->push_back(number<Number>(value));
  }
};

// What a target holds, where that is one text or number.
struct Shown {
  template <class Value>
  std::string operator()(const Value* target) const {
    if constexpr (std::is_arithmetic_v<Value> || std::is_same_v<Value, std::string>) return fmt::format("{}", *target);
    return "";
  }

  template <class Take>
  std::string operator()(const std::function<Take>&) const {
    return "";
  }
};

}  // namespace

Argument::Argument(std::string names, Target target, std::string help) : target_(std::move(target)) {
  facts_.names = std::move(names);
  facts_.help = std::move(help);
}

Argument& Argument::required() {
  facts_.required = true;
  return *this;
}

Argument& Argument::range(double low, double high) {
  facts_.limits = {low, high};
  return *this;
}

Argument& Argument::atLeast(double low) {
  facts_.limits.low = low;
  return *this;
}

Argument& Argument::valueName(std::string name) {
  facts_.valueName = std::move(name);
  return *this;
}

Argument& Argument::valueCount(std::size_t count) {
  facts_.valueCount = count;
  return *this;
}

Argument& Argument::oneAtATime() {
  facts_.oneAtATime = true;
  return *this;
}

Argument& Argument::check(Check complaintOf) {
  check_ = std::move(complaintOf);
  return *this;
}

Argument& Argument::showDefault() { return showDefault(std::visit(Shown{}, target_)); }

Argument& Argument::showDefault(std::string text) {
  facts_.defaultText = std::move(text);
  return *this;
}

std::string Argument::name() const {
  const std::size_t dashes = facts_.names.find("--");
  return dashes == std::string::npos ? facts_.names : facts_.names.substr(dashes);
}

std::vector<std::string> Argument::names() const {
  std::vector<std::string> names;
  std::istringstream list(facts_.names);
  for (std::string name; std::getline(list, name, ',');) names.push_back(name);
  return names;
}

bool Argument::isPositional() const { return !facts_.names.starts_with('-'); }

bool Argument::isFlag() const { return std::holds_alternative<bool*>(target_) || std::holds_alternative<TakeFlag>(target_); }

bool Argument::isList() const {
  return std::holds_alternative<std::vector<std::string>*>(target_) || std::holds_alternative<std::vector<std::int32_t>*>(target_) ||
         std::holds_alternative<std::vector<std::uint32_t>*>(target_);
}

void Argument::take(const std::vector<std::string>& values) const {
  try {
    std::visit(Taker{facts_, check_, values}, target_);
  } catch (const UsageError& error) {
    throw UsageError(name(), error.what());
  }
}

}  // namespace fringix::arguments
