#include "application.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>

#include "arguments/parse.h"
#include "console/explain.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct Subcommand {
  const char* name;
  const char* summary;
  void (*define)(arguments::Command& command, Context& context);
};

constexpr Subcommand subcommands[] = {
    {"list", "Search the network for heads", defineList},
    {"select", "Let you pick a head in a dialog", defineSelect},
    {"info", "Show what a head says of itself", defineInfo},
    {"status", "Show settings and state of a head", defineStatus},
    {"get", "Print a value of the head", defineGet},
    {"set", "Set a value of the head", defineSet},
    {"live", "Fetch the camera's current picture", defineLive},
    {"picture", "Fetch a picture that the head has stored", definePicture},
    {"pattern", "Fill the head with projector patterns", definePattern},
    {"show", "Show an image on the projector", defineShow},
    {"measure", "Run a measurement over a pattern sequence", defineMeasure},
    {"watch", "Print the triggers of heads as they come", defineWatch},
    {"mask", "Darken parts of everything that is projected", defineMask},
    {"data", "Keep files on the head", defineData},
    {"ini", "Read and write the head's configuration", defineIni},
    {"gpio", "Read and set the head's lines", defineGpio},
    {"serial", "Pass a command to the head's serial port", defineSerial},
    {"projector", "Pass a command to the projector", defineProjector},
    {"sheet", "Put PNG pictures on one labelled sheet", defineSheet},
};

// Known before the command line is parsed, because the arguments after ADDRESS move up where it is left out.
bool namesASerial(int argc, const char* const* argv) {
  return std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--serial" || word.starts_with("--serial="); });
}

void defineProgram(arguments::Command& program, Context& context) {
  program.version(fmt::format("fringix, library version {}", libraryVersion()));
  program.flag(
      "--trace", [] { setTracing(true); }, "Show every library call (on standard error; on Windows in the debugger's output)");
  program.note("\"fringix SUBCOMMAND --help\" tells the options of one.\nExit code: 0 success, 1 failure, 2 wrong usage.");
  for (const Subcommand& subcommand : subcommands) subcommand.define(program.subcommand(subcommand.name, subcommand.summary), context);
}

int failUsage(const arguments::UsageError& error) {
  fmt::print(stderr, "fringix: {}\n  \"fringix --help\" lists the subcommands, \"fringix SUBCOMMAND --help\" the options of one.\n",
             error.what());
  return 2;
}

int fail(const Explanation& explanation) {
  fmt::print(stderr, "fringix: {}\n", explanation.what);
  if (!explanation.next.empty()) fmt::print(stderr, "  {}\n", explanation.next);
  return 1;
}

}  // namespace

int run(int argc, const char* const* argv) {
  Context context;
  context.bySerial = namesASerial(argc, argv);
  arguments::Command program("fringix", "Talks to network-attached structured-light 3D sensor heads.");
  try {
    defineProgram(program, context);
    arguments::parse(program, argc, argv);
    return 0;
  } catch (const arguments::UsageError& error) {
    return failUsage(error);
  } catch (const Error& error) {
    return fail(explain(error, context.address));
  } catch (const Failure& failure) {
    return fail(failure.explanation());
  } catch (const std::exception& error) {
    return fail({error.what(), ""});
  }
}

}  // namespace fringix::tool
