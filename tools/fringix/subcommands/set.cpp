#include <fmt/format.h>

#include <memory>

#include "console/explain.h"
#include "heads/values.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct SetOptions {
  std::string name;
  std::int32_t number = 0;
};

bool contains(const Range& range, std::int32_t number) { return range.min <= number && number <= range.max; }

bool isRefusal(const Error& error) { return error.code() != SLCONNECTION_ERROR && error.code() != SLVERSION_TOO_OLD; }

Explanation explainRefusal(const Device& head, const Value& value, std::int32_t number, const Error& error, Context& context) {
  const std::string what = fmt::format("{} {} is refused", value.label, number);
  const std::string meaning = fmt::format("{} is: {}. Which numbers it takes is the head's business.", value.name, value.meaning);
  if (value.range == nullptr) return {fmt::format("{} {}", what, inBrackets(error)), meaning};
  const Range range = value.range(head);
  if (contains(range, number))
    return {fmt::format("{}, though it is within {} to {} {}", what, range.min, range.max, inBrackets(error)), meaning};
  return {fmt::format("{}: this head takes {} to {} {}", what, range.min, range.max, inBrackets(error)),
          fmt::format("\"fringix get {} {}\" shows the present value, which stays.", context.address, value.name)};
}

void set(const SetOptions& options, Context& context) {
  const Value& value = findValue(options.name, Access::write);
  if (!contains(value.sendable, options.number))
    throw arguments::UsageError("VALUE", fmt::format("{} is {} to {}", value.label, value.sendable.min, value.sendable.max));
  const Device head = openHead(context);
  try {
    value.write(head, options.number);
  } catch (const Error& error) {
    if (!isRefusal(error)) throw;
    throw Failure(explainRefusal(head, value, options.number, error, context));
  }
}

}  // namespace

void defineSet(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<SetOptions>();
  command.note("Values, in the units of the head:" + listValues(Access::write));
  addAddress(command, context);
  command.positional("NAME", &options->name, "Name of the value, \"fringix set --help\" lists them").required();
  command.positional("VALUE", &options->number, "The new value").required();
  command.run([options, &context] { set(*options, context); });
}

}  // namespace fringix::tool
