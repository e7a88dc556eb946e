#include "application.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <string_view>

#include "arguments/parse.h"
#include "console/call_trace.h"
#include "console/explain.h"
#include "console/output.h"
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
    {"scan", "Measure points in millimetres", defineScan},
    {"accept", "Test how well a head measures, with artefacts that are certified", defineAccept},
    {"bench", "Measure what a head and its network give", defineBench},
    {"conform", "Check that a head says what the protocol has it say", defineConform},
    {"record", "Record what programs and a head say to each other", defineRecord},
    {"recording", "Show and change recordings", defineRecording},
    {"watch", "Print the triggers of heads as they come", defineWatch},
    {"mask", "Darken parts of everything that is projected", defineMask},
    {"data", "Keep files on the head", defineData},
    {"ini", "Read and write the head's configuration", defineIni},
    {"gpio", "Read and set the head's lines", defineGpio},
    {"serial", "Pass a command to the head's serial port", defineSerial},
    {"projector", "Pass a command to the projector", defineProjector},
    {"sheet", "Put PNG pictures on one labelled sheet", defineSheet},
    {"doctor", "Find out why something does not work, and what to do", defineDoctor},
    {"explain", "Tell what a status means, and what to do", defineExplain},
};

// Known before the command line is parsed, because the arguments after ADDRESS move up where it is left out.
bool namesASerial(int argc, const char* const* argv) {
  return std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--serial" || word.starts_with("--serial="); });
}

// Known before, too: what is wrong with the rest is said as it asks for.
bool namesJson(int argc, const char* const* argv) {
  return std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--json"; });
}

void defineProgram(arguments::Command& program, Context& context) {
  program.version(fmt::format("fringix, library version {}", libraryVersion()));
  program.flag("--trace", traceCalls,
               "Show every library call with time, duration and status on standard error (on Windows the library's own lines go to the "
               "debugger's output)");
  program.note("\"fringix SUBCOMMAND --help\" tells the options of one.\nExit code: 0 success, 1 failure, 2 wrong usage.");
  for (const Subcommand& subcommand : subcommands) subcommand.define(program.subcommand(subcommand.name, subcommand.summary), context);
}

int fail(const Explanation& explanation, const Context& context, int exitCode = 1) {
  tell(explanation, context.json);
  return exitCode;
}

Explanation explainUsage(const arguments::UsageError& error) {
  return {error.what(), "\"fringix --help\" lists the subcommands, \"fringix SUBCOMMAND --help\" the options of one.", "usage"};
}

int runChecked(int argc, const char* const* argv, Context& context) {
  context.bySerial = namesASerial(argc, argv);
  context.json = namesJson(argc, argv);
  arguments::Command program("fringix", "Talks to network-attached structured-light 3D sensor heads.");
  try {
    defineProgram(program, context);
    arguments::parse(program, argc, argv);
    flushOutput();
    return 0;
  } catch (const arguments::UsageError& error) {
    return fail(explainUsage(error), context, 2);
  } catch (const Error& error) {
    return fail(explain(error, context.address), context);
  } catch (const Failure& failure) {
    return fail(failure.explanation(), context);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return fail(outputFailed() ? explainOutputFailure() : Explanation{error.what(), ""}, context);
  }
}

// Where there is no memory left, there is none for an explanation either.
int failWithoutMemory(bool asJson) {
  std::fputs(asJson ? "{\"error\":{\"kind\":\"failure\",\"what\":\"there is no memory left\",\"next\":\"\"}}\n"
                    : "fringix: there is no memory left\n",
             stderr);
  return 1;
}

}  // namespace

int run(int argc, const char* const* argv) {
  try {
    Context context;
    return runChecked(argc, argv, context);
  } catch (const std::bad_alloc&) {
    return failWithoutMemory(namesJson(argc, argv));
  }
}

}  // namespace fringix::tool
