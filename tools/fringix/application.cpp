#include "application.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>

#include "console/explain.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct Subcommand {
  const char* name;
  const char* summary;
  void (*define)(CLI::App& app, Context& context);
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

constexpr const char* blockingNote =
    "Connecting blocks until the operating system gives up: where nothing answers,\nthat takes from some seconds to minutes.";

// Known before the command line is parsed, because the arguments after ADDRESS move up where it is left out.
bool namesASerial(int argc, const char* const* argv) {
  return std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--serial" || word.starts_with("--serial="); });
}

std::string checkAddress(std::string text) {
  return CLI::ValidIPV4(text).empty() ? "" : fmt::format("\"{}\" is no IPv4 address such as 192.168.0.10", text);
}

// Whether a subcommand had to follow and none did.
bool misses(const CLI::App* app) {
  while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
  return app->get_require_subcommand_min() > 0;
}

std::string usageFailure(const CLI::App* app, const CLI::Error& error) {
  const std::vector<std::string> unexpected = app->remaining(true);
  const bool unknownSubcommand = misses(app) && !unexpected.empty();
  const std::string what = unknownSubcommand ? fmt::format("\"{}\" is no subcommand", unexpected.front()) : error.what();
  return fmt::format("fringix: {}\n  \"fringix --help\" lists the subcommands, \"fringix SUBCOMMAND --help\" the options of one.\n", what);
}

void defineGlobalOptions(CLI::App& app) {
  app.failure_message(usageFailure);
  app.set_version_flag("--version", fmt::format("fringix, library version {}", libraryVersion()));
  app.add_flag_callback(
      "--trace", [] { setTracing(true); }, "Show every library call (on standard error; on Windows in the debugger's output)");
  app.require_subcommand(1);
  app.fallthrough();
  app.footer("\"fringix SUBCOMMAND --help\" tells the options of one.\nExit code: 0 success, 1 failure, 2 wrong usage.");
}

Device openBySerial(Context& context) {
  context.address = fmt::format("serial number {}", context.serial);
  const TransientLine line(stderr, isTerminal(stderr), fmt::format("searching for {} ...", context.address));
  Device head = Device::openBySerial(context.serial);
  context.address = head.key().address;
  return head;
}

int fail(const Explanation& explanation) {
  fmt::print(stderr, "fringix: {}\n", explanation.what);
  if (!explanation.next.empty()) fmt::print(stderr, "  {}\n", explanation.next);
  return 1;
}

}  // namespace

void addAddress(CLI::App& app, Context& context) {
  if (!context.bySerial) defineAddress(app, app.add_option("ADDRESS", context.address, "IPv4 address of the head, such as 192.168.0.10"));
  defineSerialNumber(app, app.add_option("--serial", context.serial, "Serial number of the head, in place of ADDRESS: it is searched for"));
}

void defineAddress(CLI::App& app, CLI::Option* option) {
  option->required()->check(CLI::Validator(checkAddress, ""))->type_name("");
  app.footer(blockingNote);
}

void defineSerialNumber(CLI::App& app, CLI::Option* option) {
  option->type_name("N");
  app.footer(blockingNote);
}

bool isConnected(const Device& head) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  return SLGetCameraSize(head.handle(), &width, &height) == SLALL_OKAY && width != 0xFFFFFFFF;
}

Device openHead(Context& context) {
  if (context.bySerial) return openBySerial(context);
  const TransientLine line(stderr, isTerminal(stderr), fmt::format("connecting to {}:{} ...", context.address, commandPort));
  return Device(context.address);
}

int run(int argc, const char* const* argv) {
  Context context;
  context.bySerial = namesASerial(argc, argv);
  CLI::App app("Talks to network-attached structured-light 3D sensor heads.", "fringix");
  defineGlobalOptions(app);
  for (const Subcommand& subcommand : subcommands) subcommand.define(*app.add_subcommand(subcommand.name, subcommand.summary), context);
  try {
    app.parse(argc, argv);
    return 0;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const Error& error) {
    return fail(explain(error, context.address));
  } catch (const Failure& failure) {
    return fail(failure.explanation());
  } catch (const std::exception& error) {
    return fail({error.what(), ""});
  }
}

}  // namespace fringix::tool
