#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "arguments/suggestion.h"
#include "console/explain.h"
#include "console/json.h"
#include "console/statuses.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct ExplainOptions {
  std::string status;
  std::string call;
};

StatusText requireStatus(const std::string& word) {
  if (std::optional<StatusText> text = findStatus(word)) return *std::move(text);
  std::vector<std::string> names;
  for (const StatusText& each : statusTexts()) names.push_back(each.name);
  throw arguments::UsageError("STATUS", fmt::format("no status is called \"{}\"{}", word, arguments::didYouMean(word, names)));
}

void requireCall(const std::string& name) {
  const std::vector<std::string> calls = callNames();
  if (name.empty() || std::find(calls.begin(), calls.end(), name) != calls.end()) return;
  throw arguments::UsageError("CALL", fmt::format("the library has no \"{}\"{}", name, arguments::didYouMean(name, calls)));
}

Explanation fromCall(const StatusText& status, const std::string& call) {
  return explain(Error(call.c_str(), std::stoi(status.code)), "ADDRESS");
}

Json toJson(const StatusText& status, const std::string& call) {
  Json json = Json::object({{"status", std::stoi(status.code)}, {"name", status.name}, {"text", status.text}});
  if (!call.empty()) {
    const Explanation explanation = fromCall(status, call);
    json.add("call", Json::object({{"name", call}, {"what", explanation.what}, {"next", explanation.next}}));
  }
  return json;
}

void print(const StatusText& status, const std::string& call) {
  fmt::print("{}{}{}\n\n{}\n", status.code, status.name.empty() ? "" : " ", status.name, status.text);
  if (call.empty()) return;
  const Explanation explanation = fromCall(status, call);
  fmt::print("\nFrom {}: {}. {}\n", call, explanation.what, explanation.next);
}

void listStatuses(const Context& context) {
  std::vector<Json> list;
  for (const StatusText& each : statusTexts()) {
    if (!context.json) fmt::print("{:>4}  {}\n", each.code, each.name);
    list.push_back(toJson(each, ""));
  }
  if (context.json) fmt::print("{}\n", Json::array(std::move(list)).indented());
}

void explainOne(const ExplainOptions& options, const Context& context) {
  const StatusText status = requireStatus(options.status);
  requireCall(options.call);
  if (context.json) return fmt::print("{}\n", toJson(status, options.call).indented());
  print(status, options.call);
}

}  // namespace

void defineExplain(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<ExplainOptions>();
  command.positional("STATUS", &options->status, "Its number, -10, or its name; without it all are listed");
  command.positional("CALL", &options->call, "The function that gave it, e.g. SLGetLiveImage");
  addJson(command, context);
  command.run([options, &context] { options->status.empty() ? listStatuses(context) : explainOne(*options, context); });
}

}  // namespace fringix::tool
