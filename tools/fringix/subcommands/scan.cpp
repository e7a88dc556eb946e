#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "console/terminal.h"
#include "scanning/outputs.h"
#include "scanning/scan.h"
#include "scanning/summary.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct ScanOptions {
  ScanWishes wishes;
  std::string folder;
  std::string from;
  std::string unit = "mm";
  bool raw = false;
  std::uint32_t scans = 1;
};

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
  fmt::print("{}: cloud.ply, cloud.pcd, range.npy, depth.png, depth-preview.png, scan.json, report.html\n", options.folder);
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
    source([&](Image picture) {
      pictures.push_back(picture);
      sink(std::move(picture));
    });
    writeRaw(options.folder, task, pictures);
  };
}

void scanHead(const ScanOptions& options, Context& context) {
  const Device head = openHead(context);
  const SLScanPlan plan = scan::defaultPlan(static_cast<std::int32_t>(head.projectorSize().width));
  Steps steps(isTerminal(stderr), options.scans * (partsFromHead(plan) + 1) + 1);
  steps.begin("calibration");
  requireChannel(head, options.wishes.channel, context.address);
  const ScanTask task = taskOfHead(head, context.address, options.wishes);
  if (!context.json) std::for_each(task.cautions.begin(), task.cautions.end(), [&](const std::string& text) { steps.caution(text); });
  const PictureSource source = [&](const PictureSink& sink) { acquire(head, task.plan, task.channel, steps, sink); };
  ScanResult result;
  Repeatability repeatability;
  for (std::uint32_t i = 0; i < options.scans; ++i) {
    result = compute(task, steps, keeping(options, task, source));
    repeatability.add(result.decoded.cloud.points);
  }
  result.repeatability = std::move(repeatability);
  finish(options, result, steps, context.json);
}

void scanFolder(const ScanOptions& options, const Context& context) {
  const ScanTask task = taskOfFolder(options.from, options.wishes);
  Steps steps(isTerminal(stderr), partsFromFolder(task.plan) + 2);
  const PictureSource source = [&](const PictureSink& sink) { readRaw(options.from, task.plan, steps, sink); };
  const ScanResult result = compute(task, steps, keeping(options, task, source));
  finish(options, result, steps, context.json);
}

void runScan(const ScanOptions& options, Context& context) {
  const bool namesHead = context.bySerial || !context.address.empty();
  if (namesHead == !options.from.empty()) {
    throw arguments::UsageError(namesHead ? "--from needs no head: leave its address out" : "ADDRESS, --serial or --from is required");
  }
  if (!namesHead && options.scans > 1) throw arguments::UsageError("--repeat", "there are pictures of one scan in a folder");
  requireFolder(options.folder);
  namesHead ? scanHead(options, context) : scanFolder(options, context);
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
  command.option("--repeat", &options->scans, "Scan so many times, tell how much the points differ, and write those of the last scan")
      .valueName("N")
      .range(1, 1000);
  command.option("--channel", &options->wishes.channel, "Camera to measure with, 0 unless told otherwise").valueName("N").range(0, 3);
  command.option("--unit", &options->unit, "Unit of lengths in the files, mm unless told otherwise: mm or m")
      .valueName("UNIT")
      .check(checkUnit);
  command.run([options, &context] { runScan(*options, context); });
}

}  // namespace fringix::tool
