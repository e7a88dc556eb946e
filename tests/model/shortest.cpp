#include "model/shortest.h"

#include <rapidcheck/Check.h>
#include <rapidcheck/seq/Create.h>
#include <rapidcheck/seq/Operations.h>
#include <rapidcheck/shrink/Shrink.h>
#include <rapidcheck/shrinkable/Create.h>

#include <array>

namespace fringix::test {

namespace {

constexpr int longest = 160;

struct Number {
  int Step::*member;
  unsigned end;
};
constexpr std::array numbers{Number{&Step::kind, 100}, Number{&Step::slot, 3}, Number{&Step::which, 1000}, Number{&Step::damage, 24},
                             Number{&Step::place, 4096}};

Steps anySteps(rc::Random& random, int size) {
  Steps steps(random.next() % static_cast<unsigned>(size + 1));
  for (Step& step : steps) {
    for (const Number& number : numbers) step.*number.member = static_cast<int>(random.next() % number.end);
  }
  return steps;
}

// With one of its numbers smaller.
rc::Seq<Step> simpler(const Step& step) {
  Steps all;
  for (const Number& number : numbers) {
    for (const int less : {0, step.*number.member / 2, step.*number.member - 1}) {
      if (less < 0 || less >= step.*number.member) continue;
      all.push_back(step);
      all.back().*number.member = less;
    }
  }
  return rc::seq::fromContainer(all);
}

rc::Seq<Steps> simpler(const Steps& steps) {
  return rc::seq::concat(rc::shrink::removeChunks(steps), rc::shrink::eachElement(steps, [](const Step& step) { return simpler(step); }));
}

// Says nothing: whoever asked for a sequence does.
class Quiet : public rc::detail::TestListener {
  void onTestCaseFinished(const rc::detail::CaseDescription&) override {}
  void onShrinkTried(const rc::detail::CaseDescription&, bool) override {}
  void onTestFinished(const rc::detail::TestMetadata&, const rc::detail::TestResult&) override {}
};

}  // namespace

std::optional<Steps> shortestFailing(std::uint64_t seed, int count, const std::function<bool(const Steps&)>& holds) {
  std::optional<Steps> failing;  // each that fails is simpler than the one before
  const auto verdict = [&](const Steps& steps) {
    const bool good = holds(steps);
    if (!good) failing = steps;
    const auto type = good ? rc::detail::CaseResult::Type::Success : rc::detail::CaseResult::Type::Failure;
    return rc::detail::CaseDescription{rc::detail::CaseResult(type), {}, [] { return rc::detail::Example(); }};
  };
  const auto play = [&](rc::Random random, int size) {
    return rc::shrinkable::map(rc::shrinkable::shrinkRecur(anySteps(random, size), [](const Steps& steps) { return simpler(steps); }),
                               verdict);
  };
  Quiet quiet;
  rc::detail::TestParams parameters;
  parameters.seed = seed;
  parameters.maxSuccess = count;
  parameters.maxSize = longest;
  rc::detail::checkProperty(play, rc::detail::TestMetadata{}, parameters, quiet, {});
  return failing;
}

}  // namespace fringix::test
