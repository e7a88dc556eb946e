#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <span>

#include "console/explain.h"
#include "console/json.h"
#include "files/files.h"
#include "heads/conformance.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

using Results = std::vector<ConversationResult>;

constexpr const char* note =
    "Plays the examples of docs/protocol-commands.md with the head and tells each difference by byte\n"
    "and meaning. What would leave something changed is left out, unless --destructive is given: then\n"
    "images are projected, settings and the mask change, outputs switch, and a data block and a\n"
    "configuration value are written.\n"
    "Exit code: 1 when something differs.";

struct ConformOptions {
  bool destructive = false;
  std::string junit;
};

const char* inWords(Conformity verdict) {
  switch (verdict) {
    case Conformity::asExpected:
      return "as expected";
    case Conformity::differs:
      return "differs";
    case Conformity::broken:
      return "broken";
    case Conformity::leftOut:
      break;
  }
  return "left out";
}

std::size_t count(const Results& results, Conformity verdict) {
  return static_cast<std::size_t>(
      std::count_if(results.begin(), results.end(), [=](const auto& result) { return result.verdict == verdict; }));
}

void print(const ConversationResult& result) {
  fmt::print("{:<11}  {}, {}\n", inWords(result.verdict), result.command, result.example);
  for (const std::string& reason : result.reasons) fmt::print("{:13}{}\n", "", reason);
}

void printTable(const Results& results) {
  fmt::print("\n");
  for (const Conformity verdict : {Conformity::asExpected, Conformity::differs, Conformity::broken, Conformity::leftOut}) {
    fmt::print("{:<11}  {:>3}\n", inWords(verdict), count(results, verdict));
  }
}

void printJson(const Results& results) {
  std::vector<Json> all;
  for (const ConversationResult& result : results) {
    const std::vector<Json> reasons(result.reasons.begin(), result.reasons.end());
    all.push_back(Json::object({{"command", result.command},
                                {"example", result.example},
                                {"verdict", inWords(result.verdict)},
                                {"reasons", Json::array(reasons)}}));
  }
  fmt::print("{}\n", Json::array(std::move(all)).indented());
}

// As XML takes it; a head may have said anything.
std::string escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const bool isPlain = c >= ' ' && c < '\x7F' && c != '<' && c != '>' && c != '&' && c != '"';
    escaped += isPlain ? std::string(1, c) : c == '\n' ? " " : c >= ' ' && c < '\x7F' ? fmt::format("&#{};", static_cast<int>(c)) : "?";
  }
  return escaped;
}

std::string toJunit(const Results& results, const std::string& address) {
  std::string xml = "<?xml version='1.0' encoding='UTF-8'?>\n";
  xml += fmt::format(R"(<testsuite name="conversations with {}" tests="{}" failures="{}" errors="{}" skipped="{}">)", escaped(address),
                     results.size(), count(results, Conformity::differs), count(results, Conformity::broken),
                     count(results, Conformity::leftOut));
  xml += "\n";
  for (const ConversationResult& result : results) {
    xml += fmt::format(R"(  <testcase classname="{}" name="{}">)", escaped(result.command), escaped(result.example));
    const char* const element = result.verdict == Conformity::differs  ? "failure"
                                : result.verdict == Conformity::broken ? "error"
                                                                       : "skipped";
    for (const std::string& reason : result.reasons) xml += fmt::format(R"(<{} message="{}"/>)", element, escaped(reason));
    xml += "</testcase>\n";
  }
  return xml + "</testsuite>\n";
}

void write(const std::string& path, const std::string& text) {
  files::writeFile(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void judge(const Results& results) {
  const std::size_t wrong = count(results, Conformity::differs) + count(results, Conformity::broken);
  if (wrong == 0) return;
  throw Failure(
      {fmt::format("{} of {} conversations are not as they should be", wrong, results.size() - count(results, Conformity::leftOut)),
       "docs/protocol-commands.md has each of them, byte by byte.", "differs"});
}

void conform(const ConformOptions& options, Context& context) {
  if (!options.junit.empty()) files::requireWritable(options.junit);
  findAddress(context);
  const auto tell = [&](const ConversationResult& result) {
    if (!context.json) print(result);
  };
  const Results results = playConversations({context.address, context.timeout, options.destructive}, tell);
  if (context.json)
    printJson(results);
  else
    printTable(results);
  if (!options.junit.empty()) write(options.junit, toJunit(results, context.address));
  judge(results);
}

}  // namespace

void defineConform(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<ConformOptions>();
  addAddress(command, context);
  command.flag("--destructive", &options->destructive, "Also what leaves something changed on the head");
  command.option("--junit", &options->junit, "Write the results into this file, too, as JUnit has them").valueName("FILE");
  command.note(note);
  command.run([options, &context] { conform(*options, context); });
}

}  // namespace fringix::tool
