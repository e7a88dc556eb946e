#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>

#include "arguments/duration.h"
#include "console/explain.h"
#include "console/interruption.h"
#include "console/output.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "diagnosis/checks.h"
#include "diagnosis/diagnosis.h"
#include "diagnosis/report.h"
#include "subcommands/subcommand.h"
#include "times/wall_time.h"

namespace fringix::tool {
namespace {

using diagnosis::Colour;
using diagnosis::Facts;
using diagnosis::Findings;

constexpr const char* note =
    "Looks at the networks of this machine, the way to the head, what it says and how quickly,\n"
    "the port that triggers come to and the firewall, and says of each what it found (green,\n"
    "yellow or RED), what that means and what to do next, with a line to paste. Without ADDRESS\n"
    "it looks at all heads that answer a search. It changes nothing.\n"
    "Exit code: 1 when something is red.";

struct DoctorOptions {
  std::chrono::milliseconds listen{};
  std::chrono::milliseconds interval{};  // 0: only once
};

struct Round {
  Facts facts;
  Findings findings;
};

Round look(const DoctorOptions& options, const Context& context) {
  const TransientLine line(stderr, isTerminal(stderr), "looking at networks and heads ...");
  Round round;
  const std::optional<std::int32_t> serial = context.bySerial ? std::optional(context.serial) : std::nullopt;
  round.facts = diagnosis::gather({context.address, serial, context.timeout, options.listen});
  round.findings = diagnosis::checkAll(round.facts);
  return round;
}

// A reader at the end of a pipe wants each round when it is there.
void print(const std::string& text) {
  fmt::print("{}", text);
  flushOutput();
}

void judge(const Findings& findings) {
  const std::size_t red = diagnosis::count(findings, Colour::red);
  if (red == 0) return;
  std::string first;
  for (const diagnosis::Finding& finding : findings) {
    if (first.empty() && finding.colour == Colour::red) first = titleOf(finding);
  }
  throw Failure({red == 1 ? fmt::format("the doctor has found 1 thing that does not work: {}", first)
                          : fmt::format("the doctor has found {} things that do not work, first of all: {}", red, first),
                 "Do what stands beside it, then call the doctor again.", "red"});
}

void lookOnce(const DoctorOptions& options, const Context& context) {
  const Round round = look(options, context);
  print(context.json ? toJson(round.facts, round.findings).indented() + "\n" : format(round.findings, takesColours(stdout)));
  judge(round.findings);
}

std::string timeOfDay() { return localText(std::chrono::system_clock::now(), "%H:%M:%S"); }

void lookAgainAndAgain(const DoctorOptions& options, const Context& context) {
  const Interruption interruption;
  Findings before;
  for (bool first = true;; first = false) {
    const Round round = look(options, context);
    const std::string changes = first ? format(round.findings, takesColours(stdout)) : formatChanges(before, round.findings);
    if (context.json)
      print(toJson(round.facts, round.findings).line() + "\n");
    else if (!changes.empty())
      print(first ? changes : fmt::format("\n{}\n{}", timeOfDay(), changes));
    before = round.findings;
    const TransientLine line(stderr, isTerminal(stderr) && !context.json, fmt::format("looked at {}, end with Ctrl-C", timeOfDay()));
    if (interruption.waitFor(options.interval)) break;
  }
  judge(before);
}

void examine(const DoctorOptions& options, Context& context) {
  if (!context.address.empty()) findAddress(context);  // by serial number that is a part of the examination
  options.interval.count() > 0 ? lookAgainAndAgain(options, context) : lookOnce(options, context);
}

}  // namespace

void defineDoctor(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<DoctorOptions>();
  addOptionalAddress(command, context);
  command
      .option(
          "--wait", [options](const std::string& text) { options->listen = arguments::toDuration(text); },
          "Listen for triggers of the head for this time")
      .valueName("30s");
  command
      .option(
          "--watch", [options](const std::string& text) { options->interval = arguments::toDuration(text); },
          "Look again after this time, until Ctrl-C, and tell what has changed; with --json all in one line each time")
      .valueName("5s");
  command.note(note);
  command.run([options, &context] { examine(*options, context); });
}

}  // namespace fringix::tool
