#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "console/explain.h"
#include "console/interruption.h"
#include "heads/values.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

using Json = nlohmann::ordered_json;

struct StatusOptions {
  bool json = false;
  double interval = 0;  // seconds; 0: only once
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
  if (!reading.range) return fmt::format("{}", *reading.number);
  return fmt::format("{} ({} to {})", *reading.number, reading.range->min, reading.range->max);
}

std::string formatTable(const HeadStatus& status) {
  const auto line = [](const char* label, const auto& content) { return fmt::format("{:<23}{}\n", label, content); };
  std::string table =
      line("head", status.key.address) + line("serial number", status.key.serial) + line("protocol version", status.key.protocolVersion);
  for (const Reading& reading : status.readings) table += line(reading.value->label, format(reading));
  return table;
}

Json toJson(const Reading& reading) {
  Json json{{"value", nullptr}};
  if (reading.number) json["value"] = *reading.number;
  if (reading.range) json.update({{"min", reading.range->min}, {"max", reading.range->max}});
  if (!reading.number) json["reason"] = reading.reason;
  return json;
}

Json toJson(const HeadStatus& status) {
  Json values;
  for (const Reading& reading : status.readings) values[reading.value->name] = toJson(reading);
  return {
      {"address", status.key.address}, {"serial", status.key.serial}, {"protocolVersion", status.key.protocolVersion}, {"values", values}};
}

// A reader at the end of a pipe wants each status when it is there.
void print(const std::string& text) {
  fmt::print("{}", text);
  std::fflush(stdout);
}

void showOnce(const StatusOptions& options, const Device& head) {
  const HeadStatus status = readAll(head);
  print(options.json ? toJson(status).dump(2) + "\n" : formatTable(status));
}

void showAgainAndAgain(const StatusOptions& options, const Device& head) {
  const Interruption interruption;
  do {
    const HeadStatus status = readAll(head);
    print(options.json ? toJson(status).dump() + "\n" : formatTable(status) + "\n");
  } while (!interruption.waitFor(std::chrono::duration<double>(options.interval)));
}

void show(const StatusOptions& options, Context& context) {
  const Device head = openHead(context);
  options.interval > 0 ? showAgainAndAgain(options, head) : showOnce(options, head);
}

// Seconds of "1s", "500ms", "2min".
double parseInterval(const std::string& text) {
  static const std::map<std::string, double> units{{"ms", 0.001}, {"s", 1}, {"min", 60}};
  const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
  const auto unit = units.find(text.substr(end));
  double number = 0;
  if (unit == units.end() || !CLI::detail::lexical_cast(text.substr(0, end), number) || number <= 0)
    throw CLI::ValidationError("--watch", fmt::format("\"{}\" is no time such as 1s, 500ms or 2min", text));
  return number * unit->second;
}

}  // namespace

void defineStatus(CLI::App& app, Context& context) {
  const auto options = std::make_shared<StatusOptions>();
  addAddress(app, context);
  app.add_flag("--json", options->json, "Print JSON instead of a table; with --watch one line each time");
  app.add_option_function<std::string>(
         "--watch", [options](const std::string& text) { options->interval = parseInterval(text); },
         "Show the status again after this time, until Ctrl-C")
      ->type_name("1s");
  app.callback([options, &context] { show(*options, context); });
}

}  // namespace fringix::tool
