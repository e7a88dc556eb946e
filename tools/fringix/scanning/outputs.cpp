#include "scanning/outputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "clouds/npy.h"
#include "clouds/pcd.h"
#include "clouds/ply.h"
#include "files/files.h"
#include "pictures/value_picture.h"
#include "png/png_writer.h"
#include "report/report.h"
#include "scanning/acquisition.h"
#include "scanning/summary.h"

namespace fringix::tool {
namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

// A result with its lengths in the unit of the files.
class Outputs {
 public:
  Outputs(std::string folder, const ScanResult& result, LengthUnit unit)
      : folder_(std::move(folder)),
        result_(result),
        unit_(unit == LengthUnit::metre ? "m" : "mm"),
        scale_(unit == LengthUnit::metre ? 0.001F : 1.0F),
        points_(scaled(result.decoded.cloud.points)),
        sigma_(scaled(result.decoded.cloud.sigma)),
        grid_(result.grid()) {
    grid_.points = points_;
    grid_.sigma = sigma_;
  }

  void writeClouds() const {
    const std::string comments[] = {"unit " + unit_, fmt::format("serial {}", result_.task.calibration.serial),
                                    "quality is the expected standard deviation in " + unit_};
    write("cloud.ply", makePly(grid_, comments));
    write("cloud.pcd", makePcd(grid_));
    write("range.npy", makeRangeArray(grid_));
  }

  void writeDepth() const;
  void writeReport(std::span<const StepTime> times) const;
  void writeFacts(std::span<const StepTime> times) const { write("scan.json", describe(result_, times, unit_).indented() + "\n"); }

 private:
  std::vector<float> scaled(std::vector<float> numbers) const {
    if (scale_ != 1) std::transform(numbers.begin(), numbers.end(), numbers.begin(), [this](float number) { return number * scale_; });
    return numbers;
  }
  void write(const char* name, const Bytes& bytes) const { files::writeFile(files::inFolder(folder_, name), bytes); }
  void write(const char* name, std::string_view text) const { write(name, Bytes(text.begin(), text.end())); }

  std::vector<float> depths() const;  // of each pixel
  std::vector<float> ofPoints(std::span<const float> ofPixels) const;
  Bytes depthPreview() const;
  Bytes sigmaPicture() const;

  std::string folder_;
  const ScanResult& result_;
  std::string unit_;
  float scale_;
  std::vector<float> points_;
  std::vector<float> sigma_;
  PointGrid grid_;
};

std::vector<float> Outputs::depths() const {
  std::vector<float> depths(grid_.pixels());
  for (std::size_t i = 0; i < depths.size(); ++i) depths[i] = grid_.points[3 * i + 2];
  return depths;
}

std::vector<float> Outputs::ofPoints(std::span<const float> ofPixels) const {
  std::vector<float> values;
  values.reserve(result_.points());
  for (std::size_t i = 0; i < grid_.pixels(); ++i) {
    if (grid_.hasPoint(i)) values.push_back(ofPixels[i]);
  }
  return values;
}

Bytes encode(const png::Raster& raster) { return png::encodePngRgb24(raster.width, raster.height, raster.samples); }

// What lies between 1 and 99 % of the depths: single points far away shall not use up the colours.
Bytes Outputs::depthPreview() const {
  const std::vector<float> all = depths();
  const std::vector<float> measured = ofPoints(all);
  return encode(drawValues({grid_.width, grid_.height, all, quantile(measured, 0.01), quantile(measured, 0.99), unit_}));
}

Bytes Outputs::sigmaPicture() const {
  std::vector<float> sigma = sigma_;
  for (std::size_t i = 0; i < sigma.size(); ++i) sigma[i] = grid_.hasPoint(i) ? sigma[i] : none;
  return encode(drawValues({grid_.width, grid_.height, sigma, 0, quantile(ofPoints(sigma), 0.99), unit_}));
}

// The finest step of 1, 2 or 5 times a power of ten in which all depths fit into 16 bits.
void Outputs::writeDepth() const {
  const std::vector<float> all = depths();
  const double deepest = quantile(ofPoints(all), 1);
  const double step = roundStep(deepest, 65535);
  std::vector<std::uint16_t> levels(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (std::isfinite(all[i])) levels[i] = static_cast<std::uint16_t>(std::clamp(std::round(all[i] / step), 1.0, 65535.0));
  }
  const png::Text texts[] = {
      {"Unit", unit_}, {"Scale", fmt::format("{}", step)}, {"Description", "depth = level * Scale in Unit; 0: no point"}};
  write("depth.png", png::encodePngGray16(grid_.width, grid_.height, levels, texts));
  write("depth-preview.png", depthPreview());
}

void Outputs::writeReport(std::span<const StepTime> times) const {
  std::vector<float> places;
  std::vector<float> intensity;
  for (std::size_t i = 0; i < grid_.pixels(); ++i) {
    if (!grid_.hasPoint(i)) continue;
    places.insert(places.end(), {grid_.points[3 * i], grid_.points[3 * i + 1], grid_.points[3 * i + 2]});
    intensity.push_back(grid_.intensity[i]);
  }
  const std::vector<float> sigma = ofPoints(sigma_);
  Report report{fmt::format("Scan of head {}", result_.task.calibration.serial), unit_, places};
  report.channels.push_back({"intensity", "levels", 0, 255, false, std::move(intensity)});
  report.channels.push_back({"sigma", unit_, 0, quantile(sigma, 0.99), false, sigma});
  if (result_.trueError) {
    const double end = 3 * result_.trueError->rootMeanSquare * scale_;
    report.channels.push_back({"error", unit_, -end, end, true, scaled(result_.errors)});
  }
  report.tables = {summaryOf(result_), reasonsOf(result_), timesOf(times)};
  report.pictures = {{"Depth", depthPreview()}, {"Expected standard deviation", sigmaPicture()}};
  write("report.html", makeReport(report));
}

}  // namespace

void requireFolder(const std::string& folder) {
  files::makeFolder(folder);
  files::requireWritable(files::inFolder(folder, "cloud.ply"));
}

void writeOutputs(const std::string& folder, const ScanResult& result, LengthUnit unit, std::span<const StepTime> times) {
  const Outputs outputs(folder, result, unit);
  outputs.writeClouds();
  outputs.writeDepth();
  outputs.writeReport(times);
  outputs.writeFacts(times);
}

void writeRaw(const std::string& folder, const ScanTask& task, std::span<const Image> pictures) {
  const auto write = [&](const char* name, const std::string& text) {
    files::writeFile(files::inFolder(folder, name), Bytes(text.begin(), text.end()));
  };
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    files::writeFile(rawPath(folder, task.plan, i), png::encodePngGray8(pictures[i].width, pictures[i].height, pictures[i].pixels));
  }
  write("calibration.json", task.calibrationText);
  if (!task.truthText.empty()) write("truth.json", task.truthText);
}

}  // namespace fringix::tool
