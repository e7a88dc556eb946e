// The grammar of faults, and the plan that has them strike.
#include <exception>

#include "arguments/usage_error.h"
#include "fuzz/target.h"
#include "head/commands/commands.h"
#include "head/faults/fault_plan.h"
#include "head/faults/parse_fault.h"

namespace fringix::fuzz::fault_target {

namespace {

void run(Bytes input) {
  static const std::vector<std::string> names = head::commandNames();
  const std::string text(textOf(input));
  head::FaultPlan plan;
  try {
    const head::Fault fault = head::parseFault(text, names);
    require(fault.text == text, "a fault is named as it was written");
    plan.add(fault);
  } catch (const arguments::UsageError& error) {
    require(error.what()[0] != '\0', "a refusal says why");
    return;
  }
  for (const auto occasion :
       {head::Occasion::greeting, head::Occasion::command, head::Occasion::picture, head::Occasion::trigger, head::Occasion::moment}) {
    plan.strike(occasion, names[text.size() % names.size()]);
  }
}

const Registered target("fault", run);

}  // namespace

}  // namespace fringix::fuzz::fault_target
