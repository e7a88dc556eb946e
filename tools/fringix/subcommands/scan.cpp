#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "arguments/number.h"
#include "console/terminal.h"
#include "scanning/exposures.h"
#include "scanning/outputs.h"
#include "scanning/scan.h"
#include "scanning/summary.h"
#include "subcommands/picture_options.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct ScanOptions {
  ScanWishes wishes;
  std::string folder;
  std::string from;
  std::string unit = "mm";
  bool raw = false;
  bool namesChannels = false;
  std::uint32_t scans = 1;
};

constexpr std::uint32_t mostChannels = 4;
constexpr std::int32_t longestExposure = 10'000'000;

std::vector<std::string> wordsOf(const std::string& text) {
  std::vector<std::string> words(1);
  for (const char character : text) {
    if (character == ',') {
      words.emplace_back();
    } else {
      words.back() += character;
    }
  }
  return words;
}

template <class Number>
std::vector<Number> numbersOf(const std::string& text, std::size_t most, const arguments::Limits& limits) {
  std::vector<Number> numbers;
  for (const std::string& word : wordsOf(text)) {
    numbers.push_back(arguments::toNumber<Number>(word, limits));
    if (std::count(numbers.begin(), numbers.end(), numbers.back()) > 1) throw arguments::UsageError(fmt::format("{} is there twice", word));
  }
  if (numbers.size() > most) throw arguments::UsageError(fmt::format("{} numbers are given; up to {} are possible", numbers.size(), most));
  return numbers;
}

std::vector<std::uint32_t> parseChannels(const std::string& text) {
  if (text == "all") return {};
  return numbersOf<std::uint32_t>(text, mostChannels, {0, mostChannels - 1});
}

std::string checkUnit(const std::string& unit) {
  return unit == "mm" || unit == "m" ? "" : fmt::format("\"{}\" is neither mm nor m", unit);
}

void print(const ReportTable& table) {
  for (const auto& [name, value] : table.rows) fmt::print("{:<16}{}\n", name, value);
}

void report(const ScanOptions& options, const ScanResult& result, std::span<const StepTime> times, bool asJson) {
  if (asJson) return fmt::print("{}\n", describe(result, times, options.unit).indented());
  print(summaryOf(result));
  print(timesOf(times));
  const char* each = result.cameras() > 1 ? " of each camera" : "";
  fmt::print("{}: cloud.ply, cloud.pcd, range.npy, depth.png, depth-preview.png{}, scan.json, report.html\n", options.folder, each);
}

void finish(const ScanOptions& options, const ScanResult& result, Steps& steps, bool asJson) {
  steps.end();
  const std::vector<StepTime> timesBefore = steps.times();
  steps.begin("write");
  writeOutputs(options.folder, result, options.unit == "m" ? LengthUnit::metre : LengthUnit::millimetre, timesBefore);
  steps.end();
  report(options, result, steps.times(), asJson);
}

// A source that keeps the pictures, too, and writes them before anything can go wrong with their points.
PictureSource keeping(const ScanOptions& options, const ScanTask& task, PictureSource source) {
  if (!options.raw) return source;
  return [&options, &task, source = std::move(source)](const PictureSink& sink) {
    std::vector<Image> pictures;
    source([&](std::size_t camera, Image picture) {
      pictures.push_back(picture);
      sink(camera, std::move(picture));
    });
    writeRaw(options.folder, task, pictures);
  };
}

ScanTask checkedTask(const Device& head, const ScanWishes& wishes, const Context& context) {
  for (const std::uint32_t channel : wishes.channels) requireChannel(head, channel, context.address);
  ScanTask task = taskOfHead(head, context.address, wishes);
  for (const std::uint32_t channel : task.channels) requireChannel(head, channel, context.address);
  return task;
}

void scanHead(const ScanOptions& options, Context& context) {
  const Device head = openHead(context);
  Steps steps(isTerminal(stderr));
  steps.begin("calibration");
  const ScanTask task = checkedTask(head, options.wishes, context);
  steps.expect(options.scans * (partsFromHead(task) + 1) + 1);
  if (!context.json) std::for_each(task.cautions.begin(), task.cautions.end(), [&](const std::string& text) { steps.caution(text); });
  const PictureSource source = [&](const PictureSink& sink) { acquire(head, task, steps, sink); };
  ScanResult result;
  Repeatability repeatability;
  for (std::uint32_t i = 0; i < options.scans; ++i) {
    result = compute(task, steps, keeping(options, task, source));
    repeatability.add(seenFromCameras(result));
  }
  result.repeatability = std::move(repeatability);
  finish(options, result, steps, context.json);
}

void scanFolder(const ScanOptions& options, const Context& context) {
  const ScanTask task = taskOfFolder(options.from, options.wishes);
  Steps steps(isTerminal(stderr));
  steps.expect(partsFromFolder(task) + 2);
  const PictureSource source = [&](const PictureSink& sink) { readRaw(options.from, task, steps, sink); };
  const ScanResult result = compute(task, steps, keeping(options, task, source));
  finish(options, result, steps, context.json);
}

void requireNothingOfAHead(const ScanOptions& options) {
  if (options.scans > 1) throw arguments::UsageError("--repeat", "there are pictures of one scan in a folder");
  const ScanWishes& wishes = options.wishes;
  const std::pair<const char*, bool> given[] = {{"--channel", options.namesChannels},
                                                {"--exposure", !wishes.exposures.empty()},
                                                {"--hdr", wishes.seriesLength > 0},
                                                {"--generate", wishes.generated}};
  for (const auto& [option, isGiven] : given) {
    if (isGiven) throw arguments::UsageError(option, "the pictures in the folder have been taken");
  }
}

void runScan(const ScanOptions& options, Context& context) {
  const bool namesHead = context.bySerial || !context.address.empty();
  if (namesHead == !options.from.empty()) {
    throw arguments::UsageError(namesHead ? "--from needs no head: leave its address out" : "ADDRESS, --serial or --from is required");
  }
  if (!namesHead) requireNothingOfAHead(options);
  if (options.wishes.seriesLength > 0 && !options.wishes.exposures.empty())
    throw arguments::UsageError("--hdr", "--exposure says already which exposures to take");
  requireFolder(options.folder);
  namesHead ? scanHead(options, context) : scanFolder(options, context);
}

void addCapture(arguments::Command& command, const std::shared_ptr<ScanOptions>& options) {
  ScanWishes& wishes = options->wishes;
  command
      .option(
          "--channel",
          [options](const std::string& text) {
            options->wishes.channels = parseChannels(text);
            options->namesChannels = true;
          },
          "Cameras to measure with, 0 to 3: one, several as 0,1, or all; 0 unless told otherwise. The clouds hold the points of all")
      .valueName("N[,N...]");
  command
      .option(
          "--exposure",
          [&wishes](const std::string& text) {
            wishes.exposures = numbersOf<std::int32_t>(text, longestSeries, {1, longestExposure});
          },
          "Exposure in microseconds, 1 to 10000000. Several, up to 5, are merged: each pixel comes from the longest that does not saturate "
          "it")
      .valueName("US[,US...]");
  command
      .option("--hdr", &wishes.seriesLength,
              "The same with N exposures, 2 to 5, the first N of these: the head's present one, a quarter of it, four times, half, twice")
      .valueName("N")
      .range(2, longestSeries);
  command
      .option(
          "--roi", [&wishes](const std::string& text) { wishes.roi = parseRegion(text); },
          "Only this part of the camera's picture, in pixels from its top left corner")
      .valueName("X,Y,WxH");
  command.flag("--generate", &wishes.generated,
               "Have the head generate the patterns in place of uploading them, on heads whose generators count as the simulated head's");
}

}  // namespace

void defineScan(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<ScanOptions>();
  addOptionalAddress(command, context);
  command.option("-o,--output", &options->folder, "Folder for the files, made when it is missing").required().valueName("FOLDER");
  command.option("--from", &options->from, "Compute again from the raw pictures that an earlier scan left in FOLDER, without a head")
      .valueName("FOLDER");
  command.flag("--raw", &options->raw, "Keep the pictures and the calibration, for --from");
  command.option("--calibration", &options->wishes.calibrationFile, "Calibration to use in place of the one that the head keeps")
      .valueName("FILE");
  command.flag("--truth", &options->wishes.wantsTruth, "Compare with what a simulated head knows of its scene");
  command
      .option("--repeat", &options->scans,
              "Scan so many times, 1 to 1000, tell how much the points differ, and write those of the last scan")
      .valueName("N")
      .range(1, 1000);
  addCapture(command, options);
  command.option("--unit", &options->unit, "Unit of lengths in the files, mm unless told otherwise: mm or m")
      .valueName("UNIT")
      .check(checkUnit);
  command.run([options, &context] { runScan(*options, context); });
}

}  // namespace fringix::tool
