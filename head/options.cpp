#include "head/options.h"

#include <fmt/format.h>

#include <sstream>
#include <string>

#include "platform/socket.h"

namespace fringix::head {

namespace {

constexpr std::int32_t largestSide = 16384;

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
  app.add_option("--heads", options.heads, "How many heads; each one after the first has the next address and serial number")
      ->check(CLI::Range(1, 200))
      ->capture_default_str();
  app.add_option("--address", first.address, "IPv4 address of the (first) head; only this machine reaches a loopback address")
      ->check(CLI::Validator(checkAddress, "IPV4"))
      ->capture_default_str();
  app.add_option("--serial", first.serial, "Serial number of the (first) head")->check(CLI::NonNegativeNumber)->capture_default_str();
  app.add_option("--protocol", first.protocolVersion, "Protocol version: later commands are unknown to the head")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
}

void addOptics(CLI::App& app, HeadSettings& first) {
  addSize(app, "--camera", first.camera, "Camera size");
  addSize(app, "--projector", first.projector, "Projector size");
  app.add_option("--noise", first.noise, "Sensor noise, a standard deviation in grey levels")
      ->check(CLI::Range(0.0, 100.0))
      ->capture_default_str();
}

}  // namespace

Options parseOptions(CLI::App& app, int argc, char** argv) {
  Options options;
  auto imageTime = options.first.imageTime.count();
  addIdentity(app, options);
  addOptics(app, options.first);
  app.add_option("--image-time", imageTime, "Milliseconds that a measurement takes for each image")
      ->check(CLI::Range(0, 60000))
      ->capture_default_str();
  app.add_option("--measurement-fault", options.measurementFault,
                 "Answer measurements with this number, without measuring; -2 is a failed one");
  app.add_flag("--verbose", options.verbose, "Print every connection and every command, with time and client");
  app.parse(argc, argv);
  options.first.imageTime = std::chrono::milliseconds(imageTime);
  return options;
}

HeadSettings settingsOf(const Options& options, int index) {
  HeadSettings settings = options.first;
  settings.address = platform::formatIpv4(platform::parseIpv4(settings.address.c_str()) + static_cast<std::uint32_t>(index));
  settings.serial += index;
  return settings;
}

}  // namespace fringix::head
