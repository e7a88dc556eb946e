#include "head/program/options.h"

#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "arguments/duration.h"
#include "arguments/parse.h"
#include "files/files.h"
#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/model/io_lines.h"
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
    throw arguments::UsageError(fmt::format("\"{}\" is no size: give WIDTHxHEIGHT, each 1 to {}", text, largestSide));
  }
  return size;
}

SerialScript readSerialScript(const std::string& file) {
  constexpr std::uint64_t longestScript = 1 << 20;
  const std::vector<std::uint8_t> bytes = [&] {
    try {
      return files::readFile(file, longestScript);
    } catch (const std::runtime_error& error) {
      throw arguments::UsageError(error.what());
    }
  }();
  std::istringstream input(std::string(bytes.begin(), bytes.end()));
  try {
    return parseSerialScript(input);
  } catch (const std::runtime_error& error) {
    throw arguments::UsageError(fmt::format("{}: {}", file, error.what()));
  }
}

std::string checkAddress(const std::string& text) {
  return platform::formatIpv4(platform::parseIpv4(text.c_str())) == text ? "" : fmt::format("\"{}\" is no IPv4 address", text);
}

void addSize(arguments::Command& program, const std::string& name, Size& size, const std::string& help) {
  program
      .option(
          name, [&size](const std::string& text) { size = parseSize(text); }, help)
      .valueName("WxH")
      .showDefault(fmt::format("{}x{}", size.width, size.height));
}

void addIdentity(arguments::Command& program, Options& options) {
  HeadSettings& first = options.first;
  program.option("--heads", &options.heads, "How many heads; each one after the first has the next address, serial number and model")
      .range(1, 200)
      .valueName("N")
      .showDefault();
  program.option("--address", &first.address, "IPv4 address of the (first) head; only this machine reaches a loopback address")
      .check(checkAddress)
      .valueName("ADDRESS")
      .showDefault();
  program.option("--serial", &first.serial, "Serial number of the (first) head").atLeast(0).valueName("N").showDefault();
  program.option("--model", &first.modelCode, "Model code of the (first) head, 0 to 2; each one after it is of the next model")
      .range(0, modelCount - 1)
      .valueName("N")
      .showDefault();
  program.option("--protocol", &first.protocolVersion, "Protocol version: later commands are unknown to the head")
      .atLeast(0)
      .valueName("N")
      .showDefault();
}

AnnounceFault parseAnnounceFault(const std::string& text) {
  static const std::map<std::string, AnnounceFault> faults{{"silent", AnnounceFault::silent},
                                                           {"late", AnnounceFault::late},
                                                           {"doubled", AnnounceFault::doubled},
                                                           {"malformed", AnnounceFault::malformed},
                                                           {"oversized", AnnounceFault::oversized}};
  const auto found = faults.find(text);
  if (found != faults.end()) return found->second;
  throw arguments::UsageError(fmt::format("\"{}\" is no fault of an answer: give silent, late, doubled, malformed or oversized", text));
}

void addAnnouncement(arguments::Command& program, HeadSettings& first) {
  program
      .option(
          "--announce-fault", [&first](const std::string& text) { first.announceFault = parseAnnounceFault(text); },
          "What is wrong with the answers to searches: silent, late (by a second), doubled, malformed or oversized")
      .valueName("FAULT");
}

void addOptics(arguments::Command& program, HeadSettings& first) {
  addSize(program, "--camera", first.camera, "Camera size");
  addSize(program, "--projector", first.projector, "Projector size");
  program
      .option("--scene", &first.scene,
              "What stands before the head: default, plane:1 to 6, sphere:1 to 10, ballbar:1 to 7, stairs, "
              "board:1 to 20, or a mesh, a .ply or .stl file in millimetres")
      .valueName("SCENE")
      .showDefault();
}

void addImperfections(arguments::Command& program, HeadSettings& first) {
  const auto number = [&program](const char* name, double& target, double high, const char* help) {
    program.option(name, &target, help).range(0, high).valueName("X").showDefault();
  };
  number("--noise", first.noise, 100, "Sensor noise, a standard deviation in grey levels");
  number("--shot-noise", first.shotNoise, 10, "The variance that each grey level of light adds to it, realistically 0.02");
  number("--ambient", first.ambient, 255, "Light of the surroundings in grey levels");
  program.option("--gamma", &first.gamma, "Exponent by which the projector's light follows a pattern's level")
      .range(0.2, 5)
      .valueName("X")
      .showDefault();
  number("--defocus", first.defocus, 20, "Blur of the projector 100 mm behind its focus, a standard deviation in its pixels");
  number("--shine", first.shine, 100, "Gloss of a shiny patch, in shares of the light; 0: there is none");
  number("--motion", first.motion, 100, "Millimetres that a ball before the scene moves from picture to picture; 0: there is none");
  program
      .option(
          "--seed", [&first](std::int64_t seed) { first.noiseSeed = static_cast<std::uint64_t>(seed); }, "Seed of all that is random")
      .atLeast(0)
      .valueName("N")
      .showDefault(std::to_string(first.noiseSeed));
}

void addStorage(arguments::Command& program, HeadSettings& first) {
  constexpr std::size_t mebibyte = std::size_t{1} << 20;
  program.option("--storage", &first.storage, "Folder for data blocks, made when missing; several heads have subfolders by serial number")
      .valueName("DIR");
  program
      .option(
          "--data-limit", [&first](std::int64_t limit) { first.dataMemory = static_cast<std::size_t>(limit) * mebibyte; },
          "MiB for all data blocks of a head together")
      .range(1, 2047)
      .valueName("MIB")
      .showDefault(std::to_string(first.dataMemory / mebibyte));
}

void addPatternFolder(arguments::Command& program, Options& options) {
  program
      .option("--patterns", &options.patternFolder,
              "Write every image that is put into a sequence to a PNG file in this folder, made when missing")
      .valueName("DIR");
}

void addSerialPort(arguments::Command& program, HeadSettings& first) {
  program
      .option(
          "--serial-script", [&first](const std::string& file) { first.serialScript = readSerialScript(file); },
          "What the device at the serial port answers, in lines \"command => reply\"; without, it repeats every command")
      .valueName("FILE");
}

void addMeasurement(arguments::Command& program, Options& options) {
  program
      .option(
          "--image-time", [&options](std::int64_t time) { options.first.imageTime = std::chrono::milliseconds(time); },
          "Milliseconds that a measurement takes for each image, at least")
      .range(0, 60000)
      .valueName("MS")
      .showDefault(std::to_string(options.first.imageTime.count()));
  program
      .option("--measurement-fault", &options.measurementFault,
              "Answer measurements with this number, without measuring; -2 is a failed one")
      .valueName("N");
}

void addTriggers(arguments::Command& program, Options& options) {
  program
      .option(
          "--trigger-every", [&options](const std::string& text) { options.triggerInterval = arguments::toDuration(text); },
          "Raise a GPIO trigger of each head again and again after this time (2s, 500ms, 1min)")
      .valueName("TIME");
  program
      .option(
          "--trigger-line", [&options](std::int64_t line) { options.first.triggerLine = static_cast<std::int32_t>(line); },
          "Raise a GPIO trigger of a head when a client sets this line of it, as if it were wired to the trigger input")
      .range(IoLines::lineRange.low, IoLines::lineRange.high)
      .valueName("N");
}

void addClients(arguments::Command& program, HeadSettings& first) {
  program.option("--clients", &first.mostClients, "How many clients a head takes at once; it closes further connections")
      .range(1, 10000)
      .valueName("N")
      .showDefault();
  program
      .option(
          "--idle-limit", [&first](const std::string& text) { first.idleLimit = arguments::toDuration(text); },
          "How long a client may send nothing (2min, 30s); a session that is kept alive is silent for 30 s at most")
      .valueName("TIME")
      .showDefault("120s");
}

void addFaults(arguments::Command& program, std::vector<std::string>* texts) {
  program
      .option("--fault", texts,
              "What goes wrong on purpose, \"after 3 pictures: cut at byte 700\" or random:SEED:RATE; give it again for several at once")
      .oneAtATime()
      .valueName("FAULT");
}

std::vector<Fault> parseFaults(const std::vector<std::string>& texts) {
  std::vector<Fault> faults;
  try {
    for (const std::string& text : texts) faults.push_back(parseFault(text, commandNames()));
  } catch (const arguments::UsageError& error) {
    throw arguments::UsageError("--fault", error.what());
  }
  return faults;
}

void addReplay(arguments::Command& program, Options& options) {
  program.option("--replay", &options.replay, "Answer as the head did in this recording of \"fringix record\", in place of simulating one")
      .valueName("FILE");
  program.flag("--at-once", &options.atOnce, "Replay without the time that the recorded head took");
}

// A recorded head is what it was, and does what it did.
void requireReplayAlone(const Options& options) {
  if (options.replay.empty() && options.atOnce) throw arguments::UsageError("--at-once", "is for --replay FILE");
  const bool simulates =
      options.heads > 1 || !options.faults.empty() || options.triggerInterval.count() > 0 || !options.first.storage.empty();
  if (!options.replay.empty() && simulates)
    throw arguments::UsageError("--replay", "a recording is one head, and has no --heads, --fault, --trigger-every or --storage");
}

// The last head's serial number and address have to be some, too.
void requireRoomForAll(const Options& options) {
  const auto more = static_cast<std::uint32_t>(options.heads - 1);
  const auto left = [](auto largest, auto first) { return static_cast<std::uint32_t>(largest - first); };
  if (left(std::numeric_limits<std::int32_t>::max(), options.first.serial) < more)
    throw arguments::UsageError("--serial", fmt::format("{} leaves no numbers for {} heads", options.first.serial, options.heads));
  if (left(std::numeric_limits<std::uint32_t>::max(), platform::parseIpv4(options.first.address.c_str())) < more)
    throw arguments::UsageError("--address", fmt::format("{} leaves no addresses for {} heads", options.first.address, options.heads));
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
  Options options;
  std::vector<std::string> faults;
  arguments::Command program("fringix-head", "Simulated structured-light sensor heads, for work without hardware");
  addIdentity(program, options);
  addAnnouncement(program, options.first);
  addOptics(program, options.first);
  addImperfections(program, options.first);
  addMeasurement(program, options);
  addTriggers(program, options);
  addFaults(program, &faults);
  addStorage(program, options.first);
  addClients(program, options.first);
  addSerialPort(program, options.first);
  addPatternFolder(program, options);
  addReplay(program, options);
  program.flag("--verbose", &options.verbose, "Print every connection and every command, with time and client");
  program.note(
      R"(While it runs: "trigger" on standard input raises a GPIO trigger of each head, "trigger 2" of the second one; "scene ballbar:3" puts another scene before all heads; "fault FAULT" sets a fault, "fault none" ends all of them, "fault list" tells them.)");
  program.note(
      R"(A FAULT is WHEN: WHAT. WHEN is always, "at NAME" of a command (or greeting), or "after 3 commands" (pictures, triggers, a name, or a time such as 2 s); what comes after strikes once, the others each time, unless ", once", ", 5 times" or ", always" says otherwise. WHAT is stall [at byte N] [for TIME], reset [at byte N], cut [at byte N], drip [every TIME], slow link BYTES/S, wrong status N, wrong length +N or -N, no picture, frozen [for TIME], restart [after TIME], lost trigger or doubled trigger.)");
  if (!arguments::parse(program, argc, argv)) return {};
  options.faults = parseFaults(faults);
  requireReplayAlone(options);
  requireRoomForAll(options);
  return options;
}

HeadSettings settingsOf(const Options& options, int index) {
  HeadSettings settings = options.first;
  settings.address = platform::formatIpv4(platform::parseIpv4(settings.address.c_str()) + static_cast<std::uint32_t>(index));
  settings.serial += index;
  settings.modelCode = (settings.modelCode + index) % modelCount;
  if (options.heads > 1 && !settings.storage.empty())
    settings.storage = (std::filesystem::path(settings.storage) / std::to_string(settings.serial)).string();
  return settings;
}

}  // namespace fringix::head
