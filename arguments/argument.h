// One argument of a command: its names, what it means, and where its values go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace fringix::arguments {

// What may be made of a value; throws UsageError, without the argument's name, when it is wrong.
using TakeText = std::function<void(const std::string&)>;
using TakeNumber = std::function<void(std::int64_t)>;
using TakeFlag = std::function<void()>;

// Where the values go. A list takes one value or more, a flag none.
using Target =
    std::variant<std::string*, std::int32_t*, std::uint32_t*, std::size_t*, double*, std::optional<std::uint32_t>*,
                 std::vector<std::string>*, std::vector<std::int32_t>*, std::vector<std::uint32_t>*, TakeText, TakeNumber, bool*, TakeFlag>;

// What is wrong with a text; empty when nothing is.
using Check = std::function<std::string(const std::string&)>;

struct Limits {
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();  // included
};

struct ArgumentFacts {
  std::string names;  // "-o,--output"; without a dash the place in the command line decides
  std::string help;
  std::string valueName;    // stands for the value in the help
  std::string defaultText;  // shown in the help; empty: not shown
  bool required = false;
  bool oneAtATime = false;
  std::size_t valueCount = 0;  // of a list; 0: one or more
  Limits limits;
};

class Argument {
 public:
  Argument(std::string names, Target target, std::string help);

  Argument& required();
  Argument& range(double low, double high);  // numbers outside are refused
  Argument& atLeast(double low);
  Argument& valueName(std::string name);
  Argument& valueCount(std::size_t count);  // so many values, neither more nor fewer
  Argument& oneAtATime();                   // the name goes before each value of a list
  Argument& check(Check complaintOf);       // of texts
  Argument& showDefault();                  // what the target holds by now
  Argument& showDefault(std::string text);

  const ArgumentFacts& facts() const { return facts_; }
  std::string name() const;  // the one that messages use: "--output"
  std::vector<std::string> names() const;
  bool isFlag() const;
  bool isPositional() const;
  bool isList() const;

  // Converts and stores what the command line has for it. Throws UsageError, which says what is allowed.
  void take(const std::vector<std::string>& values) const;

 private:
  ArgumentFacts facts_;
  Target target_;
  Check check_;
};

}  // namespace fringix::arguments
