#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include "arguments/duration.h"
#include "console/explain.h"
#include "console/interruption.h"
#include "console/json.h"
#include "console/output.h"
#include "heads/values.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct StatusOptions {
  std::chrono::milliseconds interval{};  // 0: only once
};

struct Reading {
  const Value* value;
  std::optional<std::int64_t> number;
  std::optional<Range> range;
  std::string reason;  // why there is no number
};

struct HeadStatus {
  Key key;
  std::vector<Reading> readings;
};

// What one value cannot tell leaves the others as they are, unless the connection is lost.
Reading read(const Device& head, const Value& value, std::int32_t protocolVersion) {
  if (protocolVersion < value.since) return {&value, {}, {}, fmt::format("needs protocol version {}", value.since)};
  try {
    const std::int64_t number = value.read(head);
    if (value.range == nullptr) return {&value, number, {}, {}};
    return {&value, number, value.range(head), {}};
  } catch (const Error& error) {
    if (!isConnected(head)) throw Error(error.operation(), SLCONNECTION_ERROR);
    return {&value, {}, {}, fmt::format("the head reports a failure {}", inBrackets(error))};
  }
}

HeadStatus readAll(const Device& head) {
  HeadStatus status{head.key(), {}};
  for (const Value& value : allValues()) {
    if (value.read != nullptr) status.readings.push_back(read(head, value, status.key.protocolVersion));
  }
  return status;
}

std::string format(const Reading& reading) {
  if (!reading.number) return fmt::format("- ({})", reading.reason);
  const std::string unit = reading.value->unit == nullptr ? "" : fmt::format(" {}", reading.value->unit);
  if (!reading.range) return fmt::format("{}{}", *reading.number, unit);
  return fmt::format("{}{} ({} to {})", *reading.number, unit, reading.range->min, reading.range->max);
}

std::string formatTable(const HeadStatus& status) {
  const auto line = [](const char* label, const auto& content) { return fmt::format("{:<23}{}\n", label, content); };
  std::string table =
      line("head", status.key.address) + line("serial number", status.key.serial) + line("protocol version", status.key.protocolVersion);
  for (const Reading& reading : status.readings) table += line(reading.value->label, format(reading));
  return table;
}

Json toJson(const Reading& reading) {
  if (!reading.number) return Json::object({{"value", nullptr}, {"reason", reading.reason}});
  Json json = Json::object({{"value", *reading.number}});
  if (reading.value->unit != nullptr) json.add("unit", reading.value->unit);
  if (!reading.range) return json;
  json.add("min", reading.range->min);
  json.add("max", reading.range->max);
  return json;
}

Json toJson(const HeadStatus& status) {
  Json values = Json::object({});
  for (const Reading& reading : status.readings) values.add(reading.value->name, toJson(reading));
  return Json::object({{"address", status.key.address},
                       {"serial", status.key.serial},
                       {"protocolVersion", status.key.protocolVersion},
                       {"values", values}});
}

// A reader at the end of a pipe wants each status when it is there.
void print(const std::string& text) {
  fmt::print("{}", text);
  flushOutput();
}

void showOnce(const Context& context, const Device& head) {
  const HeadStatus status = readAll(head);
  print(context.json ? toJson(status).indented() + "\n" : formatTable(status));
}

void showAgainAndAgain(const StatusOptions& options, const Context& context, const Device& head) {
  const Interruption interruption;
  do {
    const HeadStatus status = readAll(head);
    print(context.json ? toJson(status).line() + "\n" : formatTable(status) + "\n");
  } while (!interruption.waitFor(options.interval));
}

void show(const StatusOptions& options, Context& context) {
  const Device head = openHead(context);
  options.interval.count() > 0 ? showAgainAndAgain(options, context, head) : showOnce(context, head);
}

}  // namespace

void defineStatus(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<StatusOptions>();
  addAddress(command, context);
  command
      .option(
          "--watch", [options](const std::string& text) { options->interval = arguments::toDuration(text); },
          "Show the status again after this time, until Ctrl-C; with --json in one line each time")
      .valueName("1s");
  command.run([options, &context] { show(*options, context); });
}

}  // namespace fringix::tool
