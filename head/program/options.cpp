#include "head/program/options.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "platform/socket.h"

namespace fringix::head {

namespace {

constexpr std::int32_t largestSide = 16384;
constexpr std::int32_t modelCount = 3;

Size parseSize(const std::string& text) {
  Size size;
  char separator = 0;
  std::istringstream input(text);
  const bool readable = input >> size.width >> separator >> size.height && separator == 'x' && input.eof();
  if (!readable || size.width < 1 || size.height < 1 || size.width > largestSide || size.height > largestSide) {
    throw CLI::ValidationError(fmt::format("\"{}\" is no size: give WIDTHxHEIGHT, each 1 to {}", text, largestSide));
  }
  return size;
}

std::chrono::milliseconds parseInterval(const std::string& text) {
  static const std::map<std::string, double> milliseconds{{"ms", 1}, {"s", 1000}, {"min", 60000}};
  constexpr double longest = 24 * 60 * 60000.0;
  double number = 0;
  std::string unit;
  std::istringstream input(text);
  input >> number >> unit;
  const auto found = milliseconds.find(unit);
  const double time = found == milliseconds.end() ? 0 : number * found->second;
  if (!(time >= 1 && time <= longest)) {
    throw CLI::ValidationError(fmt::format("\"{}\" is no time such as 2s, 500ms or 1min, from 1ms to 1440min", text));
  }
  return std::chrono::milliseconds(std::lround(time));
}

SerialScript readSerialScript(const std::string& file) {
  std::ifstream input(file);
  if (!input) throw CLI::ValidationError(fmt::format("cannot read the serial script \"{}\"", file));
  try {
    return parseSerialScript(input);
  } catch (const std::runtime_error& error) {
    throw CLI::ValidationError(file, error.what());
  }
}

std::string checkAddress(const std::string& text) {
  return platform::formatIpv4(platform::parseIpv4(text.c_str())) == text ? "" : fmt::format("\"{}\" is no IPv4 address", text);
}

void addSize(CLI::App& app, const std::string& name, Size& size, const std::string& help) {
  app.add_option_function<std::string>(
         name, [&size](const std::string& text) { size = parseSize(text); }, help)
      ->type_name("WxH")
      ->default_str(fmt::format("{}x{}", size.width, size.height));
}

void addIdentity(CLI::App& app, Options& options) {
  HeadSettings& first = options.first;
  app.add_option("--heads", options.heads, "How many heads; each one after the first has the next address, serial number and model")
      ->check(CLI::Range(1, 200))
      ->capture_default_str();
  app.add_option("--address", first.address, "IPv4 address of the (first) head; only this machine reaches a loopback address")
      ->check(CLI::Validator(checkAddress, "IPV4"))
      ->capture_default_str();
  app.add_option("--serial", first.serial, "Serial number of the (first) head")->check(CLI::NonNegativeNumber)->capture_default_str();
  app.add_option("--model", first.modelCode, "Model code of the (first) head, 0 to 2; each one after it is of the next model")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--protocol", first.protocolVersion, "Protocol version: later commands are unknown to the head")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
}

AnnounceFault parseAnnounceFault(const std::string& text) {
  static const std::map<std::string, AnnounceFault> faults{{"silent", AnnounceFault::silent},
                                                           {"late", AnnounceFault::late},
                                                           {"doubled", AnnounceFault::doubled},
                                                           {"malformed", AnnounceFault::malformed},
                                                           {"oversized", AnnounceFault::oversized}};
  const auto found = faults.find(text);
  if (found != faults.end()) return found->second;
  throw CLI::ValidationError(fmt::format("\"{}\" is no fault of an answer: give silent, late, doubled, malformed or oversized", text));
}

void addAnnouncement(CLI::App& app, HeadSettings& first) {
  app.add_option_function<std::string>(
         "--announce-fault", [&first](const std::string& text) { first.announceFault = parseAnnounceFault(text); },
         "What is wrong with the answers to searches: silent, late (by a second), doubled, malformed or oversized")
      ->type_name("FAULT");
}

void addOptics(CLI::App& app, HeadSettings& first) {
  addSize(app, "--camera", first.camera, "Camera size");
  addSize(app, "--projector", first.projector, "Projector size");
  app.add_option("--noise", first.noise, "Sensor noise, a standard deviation in grey levels")
      ->check(CLI::Range(0.0, 100.0))
      ->capture_default_str();
}

void addStorage(CLI::App& app, HeadSettings& first) {
  constexpr std::size_t mebibyte = std::size_t{1} << 20;
  app.add_option("--storage", first.storage, "Folder for data blocks, made when missing; several heads have subfolders by serial number")
      ->type_name("DIR");
  app.add_option_function<std::size_t>(
         "--data-limit", [&first](std::size_t limit) { first.dataMemory = limit * mebibyte; }, "MiB for all data blocks of a head together")
      ->check(CLI::Range(1, 2047))
      ->type_name("MIB")
      ->default_str(std::to_string(first.dataMemory / mebibyte));
}

void addPatternFolder(CLI::App& app, Options& options) {
  app.add_option("--patterns", options.patternFolder,
                 "Write every image that is put into a sequence to a PNG file in this folder, made when missing")
      ->type_name("DIR");
}

void addSerialPort(CLI::App& app, HeadSettings& first) {
  app.add_option_function<std::string>(
         "--serial-script", [&first](const std::string& file) { first.serialScript = readSerialScript(file); },
         "What the device at the serial port answers, in lines \"command => reply\"; without, it repeats every command")
      ->type_name("FILE");
}

void addMeasurement(CLI::App& app, Options& options) {
  app.add_option_function<std::int64_t>(
         "--image-time", [&options](std::int64_t time) { options.first.imageTime = std::chrono::milliseconds(time); },
         "Milliseconds that a measurement takes for each image")
      ->check(CLI::Range(0, 60000))
      ->type_name("MS")
      ->default_str(std::to_string(options.first.imageTime.count()));
  app.add_option("--measurement-fault", options.measurementFault,
                 "Answer measurements with this number, without measuring; -2 is a failed one");
}

void addTriggers(CLI::App& app, Options& options) {
  app.add_option_function<std::string>(
         "--trigger-every", [&options](const std::string& text) { options.triggerInterval = parseInterval(text); },
         "Raise a GPIO trigger of each head again and again after this time (2s, 500ms, 1min)")
      ->type_name("TIME");
}

}  // namespace

Options parseOptions(CLI::App& app, int argc, char** argv) {
  Options options;
  addIdentity(app, options);
  addAnnouncement(app, options.first);
  addOptics(app, options.first);
  addMeasurement(app, options);
  addTriggers(app, options);
  addStorage(app, options.first);
  addSerialPort(app, options.first);
  addPatternFolder(app, options);
  app.add_flag("--verbose", options.verbose, "Print every connection and every command, with time and client");
  app.footer(R"(While it runs: "trigger" on standard input raises a GPIO trigger of each head, "trigger 2" of the second one.)");
  app.parse(argc, argv);
  return options;
}

HeadSettings settingsOf(const Options& options, int index) {
  HeadSettings settings = options.first;
  settings.address = platform::formatIpv4(platform::parseIpv4(settings.address.c_str()) + static_cast<std::uint32_t>(index));
  settings.serial += index;
  if (settings.modelCode < modelCount) settings.modelCode = (settings.modelCode + index) % modelCount;
  if (options.heads > 1 && !settings.storage.empty())
    settings.storage = (std::filesystem::path(settings.storage) / std::to_string(settings.serial)).string();
  return settings;
}

}  // namespace fringix::head
