// fringix-head: simulated heads for people, demos and scripts.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <list>
#include <sstream>
#include <string>

#include "head/head_server.h"
#include "platform/clock.h"
#include "platform/socket.h"

namespace {

using namespace fringix;
using head::Happening;
using head::HeadSettings;

constexpr int failed = 1;
constexpr int wrongUsage = 2;
constexpr std::int32_t largestSide = 16384;

struct Options {
  HeadSettings first;
  int heads = 1;
  bool verbose = false;
};

std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only touch what needs no lock");

void requestStop(int) { stopRequested = true; }

// One write and a flush a line: sessions print side by side, and a reader at the end of a pipe waits for the last line.
void printLine(const std::string& line) {
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

head::Size parseSize(const std::string& text) {
  head::Size size;
  char separator = 0;
  std::istringstream input(text);
  const bool readable = input >> size.width >> separator >> size.height && separator == 'x' && input.eof();
  if (!readable || size.width < 1 || size.height < 1 || size.width > largestSide || size.height > largestSide) {
    throw CLI::ValidationError(fmt::format("\"{}\" is no size: give WIDTHxHEIGHT, each 1 to {}", text, largestSide));
  }
  return size;
}

std::string checkAddress(const std::string& text) {
  return platform::formatIpv4(platform::parseIpv4(text.c_str())) == text ? "" : fmt::format("\"{}\" is no IPv4 address", text);
}

Options parseOptions(CLI::App& app, int argc, char** argv) {
  Options options;
  HeadSettings& first = options.first;
  app.add_option("--heads", options.heads, "How many heads; each one after the first has the next address and serial number")
      ->check(CLI::Range(1, 200))
      ->capture_default_str();
  app.add_option("--address", first.address, "IPv4 address of the (first) head; only this machine reaches a loopback address")
      ->check(CLI::Validator(checkAddress, "IPV4"))
      ->capture_default_str();
  app.add_option("--serial", first.serial, "Serial number of the (first) head")->check(CLI::NonNegativeNumber)->capture_default_str();
  app.add_option_function<std::string>(
         "--camera", [&](const std::string& text) { first.camera = parseSize(text); }, "Camera size")
      ->default_str("1280x1024");
  app.add_option_function<std::string>(
         "--projector", [&](const std::string& text) { first.projector = parseSize(text); }, "Projector size")
      ->default_str("1280x800");
  app.add_option("--protocol", first.protocolVersion, "Protocol version: later commands are unknown to the head")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_flag("--verbose", options.verbose, "Print every connection and every command, with time and client");
  app.parse(argc, argv);
  return options;
}

HeadSettings settingsOf(const Options& options, int index) {
  HeadSettings settings = options.first;
  settings.address = platform::formatIpv4(platform::parseIpv4(settings.address.c_str()) + static_cast<std::uint32_t>(index));
  settings.serial += index;
  return settings;
}

std::string describe(Happening happening, const std::string& text) {
  switch (happening) {
    case Happening::connected:
      return "connected";
    case Happening::disconnected:
      return "disconnected";
    case Happening::trouble:
      return "connection closed: " + text;
    case Happening::command:
      break;
  }
  return text;
}

head::Observer makeObserver(const HeadSettings& settings, bool verbose) {
  return [serial = settings.serial, verbose](Happening happening, const std::string& client, const std::string& text) {
    if (!verbose && happening != Happening::trouble) return;
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const auto fraction = now.time_since_epoch() % std::chrono::seconds(1);
    const std::tm local = fmt::localtime(std::chrono::system_clock::to_time_t(now));
    printLine(fmt::format("{:%H:%M:%S}.{:03} head {}  {}  {}", local, fraction.count(), serial, client, describe(happening, text)));
  };
}

void serve(const Options& options) {
  std::list<head::HeadServer> servers;
  for (int i = 0; i < options.heads; ++i) {
    const HeadSettings settings = settingsOf(options, i);
    servers.emplace_back(settings, makeObserver(settings, options.verbose)).start();
    printLine(fmt::format("head {} at {}: camera {}x{}, projector {}x{}, protocol {}", settings.serial, settings.address,
                          settings.camera.width, settings.camera.height, settings.projector.width, settings.projector.height,
                          settings.protocolVersion));
  }
  printLine(fmt::format("ready: {} listening on port {}, end with Ctrl-C",
                        options.heads == 1 ? "1 head" : fmt::format("{} heads", options.heads), head::commandPort));
  while (!stopRequested) platform::sleepFor(std::chrono::milliseconds(50));
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Simulated structured-light sensor heads, for work without hardware");
  std::signal(SIGINT, requestStop);
  std::signal(SIGTERM, requestStop);
  try {
    serve(parseOptions(app, argc, argv));
    return 0;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : wrongUsage;
  } catch (const std::exception& error) {
    fmt::print(stderr, "fringix-head: {}\n", error.what());
    return failed;
  }
}
