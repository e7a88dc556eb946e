#include "scanning/scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "console/explain.h"
#include "files/files.h"
#include "scanning/calibration_check.h"
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

Decoded decode(const ScanResult& result, Steps& steps, const PictureSource& source) {
  Decoder decoder(result.task.plan, result.task.calibration, result.task.settings, result.task.channel);
  source([&](Image picture) {
    requireCameraSize(result.task.calibration, result.task.channel, {picture.width, picture.height});
    decoder.take(std::move(picture));
  });
  steps.begin("compute");
  try {
    return decoder.finish();
  } catch (const scan::Error& error) {
    if (error.code() != SLSCAN_BAD_PICTURES) throw;
    throw Failure({fmt::format("no scan comes of these pictures: {}", error.what()),
                   "Look at them: --raw keeps them in the folder. Is something in front of the head, is the light on, the lens cap off?"});
  }
}

void compareWithTruth(ScanResult& result) {
  const Truth truth = readTruth(result.task.truthText);
  const PointGrid grid = result.grid();
  result.errors.reserve(result.points());
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (!grid.hasPoint(i)) continue;
    result.errors.push_back(static_cast<float>(errorOf(truth, {grid.points[3 * i], grid.points[3 * i + 1], grid.points[3 * i + 2]})));
  }
  result.trueError = figuresOf(result.errors);
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
  task.plan = scan::defaultPlan(static_cast<std::int32_t>(head.projectorSize().width));
  task.settings = settingsForThisMachine();
  task.channel = wishes.channel;
  task.calibrationText = wishes.calibrationFile.empty()
                             ? loadText(head, address, "calibration.json", "Give its calibration with --calibration FILE.")
                             : readText(wishes.calibrationFile);
  task.calibration = scan::readCalibration(task.calibrationText);
  requireCamera(task.calibration, task.channel);
  requireCameraSize(task.calibration, task.channel, head.cameraSize());
  requireProjectorSize(task.calibration, head.projectorSize());
  task.cautions = cautionsAbout(task.calibration, head.key().serial);
  if (wishes.wantsTruth)
    task.truthText = loadText(head, address, "truth.json", "Only a simulated head knows what it looks at: leave --truth out.");
  return task;
}

ScanTask taskOfFolder(const std::string& folder, const ScanWishes& wishes) {
  const StoredScan stored = readStoredScan(readText(files::inFolder(folder, "scan.json")));
  ScanTask task;
  task.plan = stored.plan;
  task.settings = settingsForThisMachine();
  task.channel = stored.channel;
  task.calibrationText = readText(wishes.calibrationFile.empty() ? files::inFolder(folder, "calibration.json") : wishes.calibrationFile);
  task.calibration = scan::readCalibration(task.calibrationText);
  requireCamera(task.calibration, task.channel);
  if (wishes.wantsTruth) task.truthText = readText(files::inFolder(folder, "truth.json"));
  return task;
}

ScanResult compute(ScanTask task, Steps& steps, const PictureSource& source) {
  ScanResult result;
  result.task = std::move(task);
  result.decoded = decode(result, steps, source);
  result.lit = static_cast<std::uint64_t>(std::count_if(result.decoded.modulation.begin(), result.decoded.modulation.end(),
                                                        [](float modulation) { return modulation >= litModulation; }));
  result.medianSigma = medianSigma(result.grid());
  steps.advance();
  if (result.task.truthText.empty()) return result;
  steps.begin("compare");
  compareWithTruth(result);
  return result;
}

}  // namespace fringix::tool
