// Other texts that people and programs hand over: numbers, lengths of time, scripts of serial devices. The first byte chooses.
#include <sstream>
#include <stdexcept>

#include "arguments/duration.h"
#include "arguments/number.h"
#include "arguments/usage_error.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "head/settings/serial_script.h"

namespace fringix::fuzz::texts_target {

namespace {

void readNumber(const std::string& text) {
  const arguments::Limits limits{-1000, 1e12};
  const auto value = arguments::toNumber<std::int64_t>(text, limits);
  require(value >= -1000 && value <= 1'000'000'000'000, "numbers are within their limits");
  require(arguments::toNumber<std::int64_t>(std::to_string(value), limits) == value, "a number is the same when it is written anew");
}

void readScript(const std::string& text) {
  std::istringstream input(text);
  for (const head::SerialAnswer& answer : head::parseSerialScript(input)) {
    require(!answer.command.empty() && !answer.reply.empty(), "a line of a script has both sides");
  }
}

void run(Bytes input) {
  Input in(input);
  const std::uint8_t what = in.byte();
  const std::string text(textOf(in.all()));
  try {
    if (what % 4 == 0) readNumber(text);
    if (what % 4 == 1) arguments::toNumber<double>(text, {0, 1e9});
    if (what % 4 == 2) require(arguments::toDuration(text) >= std::chrono::milliseconds(0), "time goes on");
    if (what % 4 == 3) readScript(text);
  } catch (const arguments::UsageError&) {
  } catch (const std::runtime_error&) {
  }
}

const Registered target("texts", run);

}  // namespace

}  // namespace fringix::fuzz::texts_target
