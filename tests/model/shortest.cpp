#include "model/shortest.h"

#include <rapidcheck/Assertions.h>
#include <rapidcheck/Check.h>
#include <rapidcheck/gen/Build.h>
#include <rapidcheck/gen/Container.h>
#include <rapidcheck/gen/Numeric.h>
#include <rapidcheck/gen/Transform.h>

namespace fringix::test {

namespace {

constexpr int longest = 160;

// Says nothing: whoever asked for a sequence does.
class Quiet : public rc::detail::TestListener {
  void onTestCaseFinished(const rc::detail::CaseDescription&) override {}
  void onShrinkTried(const rc::detail::CaseDescription&, bool) override {}
  void onTestFinished(const rc::detail::TestMetadata&, const rc::detail::TestResult&) override {}
};

rc::Gen<Steps> anySteps() {
  const auto upTo = [](int end) { return rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, end)); };  // all of them as likely
  return rc::gen::container<Steps>(rc::gen::construct<Step>(upTo(100), upTo(3), upTo(1000), upTo(24), upTo(4096)));
}

}  // namespace

std::optional<Steps> shortestFailing(std::uint64_t seed, int count, const std::function<bool(const Steps&)>& holds) {
  std::optional<Steps> failing;  // each that fails is simpler than the one before
  Quiet quiet;
  rc::detail::TestParams parameters;
  parameters.seed = seed;
  parameters.maxSuccess = count;
  parameters.maxSize = longest;
  const auto check = [&](const Steps& steps) {
    if (holds(steps)) return true;
    failing = steps;
    return false;
  };
  rc::detail::checkProperty(rc::detail::toProperty([&] { RC_ASSERT(check(*anySteps())); }), rc::detail::TestMetadata{}, parameters, quiet,
                            {});
  return failing;
}

}  // namespace fringix::test
