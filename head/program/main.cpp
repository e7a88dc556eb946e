// fringix-head: simulated heads for people, demos and scripts.
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <list>
#include <optional>
#include <stdexcept>
#include <string>

#include "arguments/usage_error.h"
#include "head/program/console.h"
#include "head/program/input_lines.h"
#include "head/program/options.h"
#include "head/program/pattern_files.h"
#include "head/program/printable.h"
#include "head/program/replay_program.h"
#include "head/serving/head_server.h"
#include "times/wall_time.h"

namespace {

using namespace fringix;
using head::Happening;
using head::HeadSettings;
using head::printable;

constexpr int failed = 1;
constexpr int wrongUsage = 2;

std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only touch what needs no lock");

void requestStop(int) { stopRequested = true; }

// One write and a flush: sessions print side by side, and a reader at the end of a pipe waits for the last line.
void print(const std::string& lines) {
  std::fputs(lines.c_str(), stdout);
  std::fflush(stdout);
}

void printLine(const std::string& line) { print(line + "\n"); }

// A script would wait for ever for the line that it cannot get.
void requireOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw std::runtime_error("the output could not be written");
}

std::string describe(Happening happening, const std::string& text) {
  switch (happening) {
    case Happening::found:
      return "found by a search";
    case Happening::connected:
      return "connected";
    case Happening::disconnected:
      return "disconnected";
    case Happening::refused:
      return "connection refused: " + text;
    case Happening::fault:
      return "fault: " + text;
    case Happening::trouble:
      return "connection closed: " + text;
    case Happening::command:
      break;
  }
  return text;
}

head::Observer makeObserver(const HeadSettings& settings, bool verbose) {
  return [serial = settings.serial, verbose](Happening happening, const std::string& client, const std::string& text) {
    if (!verbose && happening != Happening::trouble && happening != Happening::refused) return;
    const WallTime now = std::chrono::system_clock::now();
    const std::string time = localText(now, "%H:%M:%S") + millisecondText(now);
    printLine(fmt::format("{} head {}  {}  {}", time, serial, client, printable(describe(happening, text))));
  };
}

void startHeads(const head::Options& options, std::list<head::HeadServer>& servers) {
  for (int i = 0; i < options.heads; ++i) {
    HeadSettings settings = settingsOf(options, i);
    if (!options.patternFolder.empty()) settings.patternStored = head::patternWriter(options.patternFolder, settings.serial);
    auto& server = servers.emplace_back(settings, makeObserver(settings, options.verbose));
    server.model().setMeasurementFault(options.measurementFault);
    for (const head::Fault& fault : options.faults) server.faults().add(fault);
    server.start();
    printLine(fmt::format("head {} at {}: camera {}x{}, projector {}x{}, protocol {}", settings.serial, settings.address,
                          settings.camera.width, settings.camera.height, settings.projector.width, settings.projector.height,
                          settings.protocolVersion));
  }
  const std::string count = options.heads == 1 ? "1 head" : fmt::format("{} heads", options.heads);
  printLine(fmt::format("ready: {} listening on port {}, end with Ctrl-C", count, head::commandPort));
}

// Obeys standard input and raises triggers in time, until the program is to end.
void serve(const head::Options& options) {
  using Clock = std::chrono::steady_clock;
  head::InputLines input;
  std::list<head::HeadServer> servers;
  startHeads(options, servers);
  requireOutput();
  const bool triggers = options.triggerInterval > Clock::duration::zero();
  for (auto next = Clock::now() + options.triggerInterval; !stopRequested;) {
    constexpr std::chrono::milliseconds stopInterval{50};
    const auto untilTrigger = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
    if (const auto line = input.next(triggers ? std::min(untilTrigger, stopInterval) : stopInterval)) print(obey(*line, servers));
    if (!triggers || Clock::now() < next) continue;
    const std::string told = triggerAll(servers);
    if (options.verbose) print(told);
    next = std::max(next + options.triggerInterval, Clock::now());  // what a busy machine misses is not made up for
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGINT, requestStop);
  std::signal(SIGTERM, requestStop);
  try {
    bool asRecorded = true;
    if (const std::optional<head::Options> options = head::parseOptions(argc, argv)) {
      if (options->replay.empty())
        serve(*options);
      else
        asRecorded = head::replay(*options, stopRequested, printLine);
    }
    requireOutput();
    return asRecorded ? 0 : failed;
  } catch (const arguments::UsageError& error) {
    fmt::print(stderr, "{}\nRun with --help for more information.\n", error.what());
    return wrongUsage;
  } catch (const std::exception& error) {
    fmt::print(stderr, "fringix-head: {}\n", error.what());
    return failed;
  }
}
