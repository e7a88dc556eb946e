#include "scanning/scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <thread>
#include <utility>

#include "console/explain.h"
#include "files/files.h"
#include "scanning/calibration_check.h"
#include "scanning/exposures.h"
#include "scanning/generated_patterns.h"
#include "scanning/stored_json.h"

namespace fringix::tool {
namespace {

constexpr std::uint64_t largestText = std::uint64_t{1} << 28;
constexpr float litModulation = 5;  // in grey levels: well above the noise of a picture in the dark

std::string textOf(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

std::string readText(const std::string& path) { return textOf(files::readFile(path, largestText)); }

std::string loadText(const Device& head, const std::string& address, const char* name, const char* next) {
  const std::vector<std::uint8_t> bytes = head.loadData(name);
  if (bytes.empty()) throw Failure({fmt::format("the head at {} has no {}", address, name), next});
  return textOf(bytes);
}

SLScanSettings settingsForThisMachine() {
  SLScanSettings settings = scan::defaultSettings();
  settings.threads = static_cast<std::int32_t>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
  return settings;
}

void requirePictureSize(const ScanTask& task, std::uint32_t channel, Size size) {
  const Region needed = neededRegion(task);
  if (!task.roi) requireCameraSize(task.calibration, channel, size);
  if (isSame(size, {needed.width, needed.height})) return;
  throw Failure({fmt::format("the pictures have {} x {} pixels, but {} x {} are needed for the region", size.width, size.height,
                             needed.width, needed.height),
                 "Scan again with --raw."});
}

Decoded finish(std::vector<std::unique_ptr<Decoder>>& decoders) {
  try {
    Decoded all = decoders.front()->finish();
    for (std::size_t i = 1; i < decoders.size(); ++i) append(all, decoders[i]->finish());
    if (all.cloud.findings.counts[SLSCAN_POINT] > 0) return all;
    throw scan::Error("no pixel of the region gives a point", SLSCAN_BAD_PICTURES);
  } catch (const scan::Error& error) {
    if (error.code() != SLSCAN_BAD_PICTURES) throw;
    throw Failure({fmt::format("no scan comes of these pictures: {}", error.what()),
                   "Look at them: --raw keeps them in the folder. Is something in front of the head, is the light on, the lens cap off?"});
  }
}

Decoded decode(const ScanTask& task, Steps& steps, const PictureSource& source) {
  std::vector<std::unique_ptr<Decoder>> decoders;
  for (const std::uint32_t channel : task.channels) decoders.push_back(std::make_unique<Decoder>(task, channel));
  source([&](std::size_t camera, Image picture) {
    requirePictureSize(task, task.channels[camera], {picture.width, picture.height});
    decoders[camera]->take(std::move(picture));
  });
  steps.begin("compute");
  return finish(decoders);
}

std::vector<std::uint32_t> allCameras(const SLScanCalibration& calibration) {
  std::vector<std::uint32_t> channels(static_cast<std::size_t>(calibration.cameraCount));
  std::iota(channels.begin(), channels.end(), 0U);
  return channels;
}

void requireFit(const ScanTask& task) {
  for (const std::uint32_t channel : task.channels) requireCamera(task.calibration, channel);
  for (const std::uint32_t channel : task.channels) requireCameraSize(task.calibration, channel, cameraSizeOf(task));
  requireRegion(task);
}

void compareWithTruth(ScanResult& result) {
  const Truth truth = readTruth(result.task.truthText);
  const PointGrid grid = result.grid();
  std::vector<float> sigmas;
  result.errors.reserve(result.points());
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (!grid.hasPoint(i)) continue;
    sigmas.push_back(grid.sigma[i]);
    result.errors.push_back(static_cast<float>(errorOf(truth, {grid.points[3 * i], grid.points[3 * i + 1], grid.points[3 * i + 2]})));
  }
  result.trueError = figuresOf(result.errors, sigmas);
}

double medianSigma(const PointGrid& grid) {
  std::vector<float> sigmas;
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (grid.hasPoint(i)) sigmas.push_back(grid.sigma[i]);
  }
  return quantile(std::move(sigmas), 0.5);
}

}  // namespace

ScanTask taskOfHead(const Device& head, const std::string& address, const ScanWishes& wishes) {
  ScanTask task;
  const auto columns = static_cast<std::int32_t>(head.projectorSize().width);
  task.plan = wishes.generated ? generatedPlan(columns) : scan::defaultPlan(columns);
  task.generated = wishes.generated;
  task.settings = settingsForThisMachine();
  task.roi = wishes.roi;
  task.calibrationText = wishes.calibrationFile.empty()
                             ? loadText(head, address, "calibration.json", "Give its calibration with --calibration FILE.")
                             : readText(wishes.calibrationFile);
  task.calibration = scan::readCalibration(task.calibrationText);
  task.channels = wishes.channels.empty() ? allCameras(task.calibration) : wishes.channels;
  for (const std::uint32_t channel : task.channels) requireCamera(task.calibration, channel);
  requireCameraSize(task.calibration, task.channels.front(), head.cameraSize());
  requireProjectorSize(task.calibration, head.projectorSize());
  requireFit(task);
  task.cautions = cautionsAbout(task.calibration, head.key().serial);
  task.exposures = wishes.seriesLength > 0 ? exposureSeries(presentExposure(head), wishes.seriesLength) : wishes.exposures;
  if (wishes.wantsTruth)
    task.truthText = loadText(head, address, "truth.json", "Only a simulated head knows what it looks at: leave --truth out.");
  return task;
}

ScanTask taskOfFolder(const std::string& folder, const ScanWishes& wishes) {
  const StoredScan stored = readStoredScan(readText(files::inFolder(folder, "scan.json")));
  if (wishes.roi && stored.roi && !isSame(*wishes.roi, *stored.roi)) {
    throw Failure({fmt::format("the pictures in \"{}\" show one region only, {} x {} pixels at {}, {}", folder, stored.roi->width,
                               stored.roi->height, stored.roi->x, stored.roi->y),
                   "Leave --roi out, or scan again."});
  }
  ScanTask task;
  task.plan = stored.plan;
  task.generated = stored.generated;
  task.settings = settingsForThisMachine();
  task.channels = stored.channels;
  task.exposures = stored.exposures;
  task.roi = stored.roi ? stored.roi : wishes.roi;
  task.calibrationText = readText(wishes.calibrationFile.empty() ? files::inFolder(folder, "calibration.json") : wishes.calibrationFile);
  task.calibration = scan::readCalibration(task.calibrationText);
  requireFit(task);
  if (wishes.wantsTruth) task.truthText = readText(files::inFolder(folder, "truth.json"));
  return task;
}

ScanResult compute(ScanTask task, Steps& steps, const PictureSource& source) {
  ScanResult result;
  result.task = std::move(task);
  result.decoded = decode(result.task, steps, source);
  result.lit = static_cast<std::uint64_t>(std::count_if(result.decoded.modulation.begin(), result.decoded.modulation.end(),
                                                        [](float modulation) { return modulation >= litModulation; }));
  result.medianSigma = medianSigma(result.grid());
  steps.advance();
  if (result.task.truthText.empty()) return result;
  steps.begin("compare");
  compareWithTruth(result);
  return result;
}

Place pinholeOf(const SLScanOptics& camera) {
  Place place{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (std::size_t row = 0; row < 3; ++row) place[axis] -= camera.rotation[3 * row + axis] * camera.translation[row];
  }
  return place;
}

std::vector<float> seenFromCameras(const ScanResult& result) {
  std::vector<float> points = result.decoded.cloud.points;
  const std::size_t each = points.size() / result.cameras();
  for (std::size_t camera = 0; camera < result.cameras(); ++camera) {
    const Place pinhole = pinholeOf(result.task.calibration.cameras[result.task.channels[camera]]);
    for (std::size_t i = camera * each; i < (camera + 1) * each; ++i) points[i] -= static_cast<float>(pinhole[i % 3]);
  }
  return points;
}

}  // namespace fringix::tool
