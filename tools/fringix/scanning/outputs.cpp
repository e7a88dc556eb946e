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

std::vector<float> depthsOf(const PointGrid& grid) {
  std::vector<float> depths(grid.pixels());
  for (std::size_t i = 0; i < depths.size(); ++i) depths[i] = grid.points[3 * i + 2];
  return depths;
}

std::vector<float> ofPoints(const PointGrid& grid, std::span<const float> ofPixels) {
  std::vector<float> values;
  for (std::size_t i = 0; i < grid.pixels(); ++i) {
    if (grid.hasPoint(i)) values.push_back(ofPixels[i]);
  }
  return values;
}

// The pixels of a grid that have a point, in one row.
class OnlyPoints {
 public:
  explicit OnlyPoints(const PointGrid& all) {
    for (std::size_t i = 0; i < all.pixels(); ++i) {
      if (!all.hasPoint(i)) continue;
      for (std::size_t axis = 3 * i; axis < 3 * i + 3; ++axis) {
        points_.push_back(all.points[axis]);
        normals_.push_back(all.normals[axis]);
      }
      sigma_.push_back(all.sigma[i]);
      intensity_.push_back(all.intensity[i]);
    }
  }

  PointGrid grid() const { return {static_cast<std::uint32_t>(sigma_.size()), 1, points_, normals_, sigma_, intensity_}; }

 private:
  std::vector<float> points_;
  std::vector<float> normals_;
  std::vector<float> sigma_;
  std::vector<std::uint8_t> intensity_;
};

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

  void writeClouds() const;
  void writeRangesAndDepths() const;
  void writeReport(std::span<const StepTime> times) const;
  void writeFacts(std::span<const StepTime> times) const { write("scan.json", describe(result_, times, unit_).indented() + "\n"); }

 private:
  std::vector<float> scaled(std::vector<float> numbers) const {
    if (scale_ != 1) std::transform(numbers.begin(), numbers.end(), numbers.begin(), [this](float number) { return number * scale_; });
    return numbers;
  }
  void write(const std::string& name, const Bytes& bytes) const { files::writeFile(files::inFolder(folder_, name), bytes); }
  void write(const std::string& name, std::string_view text) const { write(name, Bytes(text.begin(), text.end())); }

  // Of one camera, counted as in the task.
  PointGrid gridOf(std::uint32_t camera) const;
  std::string nameOf(std::uint32_t camera, const char* name, const char* extension) const;  // with the channel when there are several
  void writeDepth(std::uint32_t camera) const;
  Bytes depthPreview(std::uint32_t camera) const;
  Bytes sigmaPicture(std::uint32_t camera) const;
  std::vector<ReportPicture> pictures() const;

  std::string folder_;
  const ScanResult& result_;
  std::string unit_;
  float scale_;
  std::vector<float> points_;
  std::vector<float> sigma_;
  PointGrid grid_;
};

PointGrid Outputs::gridOf(std::uint32_t camera) const {
  const std::size_t pixels = std::size_t{result_.width()} * result_.height();
  const std::size_t first = pixels * camera;
  return {result_.width(),
          result_.height(),
          grid_.points.subspan(3 * first, 3 * pixels),
          grid_.normals.subspan(3 * first, 3 * pixels),
          grid_.sigma.subspan(first, pixels),
          grid_.intensity.subspan(first, pixels)};
}

std::string Outputs::nameOf(std::uint32_t camera, const char* name, const char* extension) const {
  if (result_.cameras() == 1) return fmt::format("{}.{}", name, extension);
  return fmt::format("{}-{}.{}", name, result_.task.channels[camera], extension);
}

// Several cameras have no common order of pixels, so their cloud is one without.
void Outputs::writeClouds() const {
  const std::string comments[] = {"unit " + unit_, fmt::format("serial {}", result_.task.calibration.serial),
                                  "quality is the expected standard deviation in " + unit_};
  write("cloud.ply", makePly(grid_, comments));
  write("cloud.pcd", result_.cameras() == 1 ? makePcd(grid_) : makePcd(OnlyPoints(grid_).grid()));
}

void Outputs::writeRangesAndDepths() const {
  for (std::uint32_t camera = 0; camera < result_.cameras(); ++camera) {
    write(nameOf(camera, "range", "npy"), makeRangeArray(gridOf(camera)));
    writeDepth(camera);
  }
}

Bytes encode(const png::Raster& raster) { return png::encodePngRgb24(raster.width, raster.height, raster.samples); }

// What lies between 1 and 99 % of the depths: single points far away shall not use up the colours.
Bytes Outputs::depthPreview(std::uint32_t camera) const {
  const PointGrid grid = gridOf(camera);
  const std::vector<float> all = depthsOf(grid);
  const std::vector<float> measured = ofPoints(grid, all);
  return encode(drawValues({grid.width, grid.height, all, quantile(measured, 0.01), quantile(measured, 0.99), unit_}));
}

Bytes Outputs::sigmaPicture(std::uint32_t camera) const {
  const PointGrid grid = gridOf(camera);
  std::vector<float> sigma(grid.sigma.begin(), grid.sigma.end());
  for (std::size_t i = 0; i < sigma.size(); ++i) sigma[i] = grid.hasPoint(i) ? sigma[i] : none;
  return encode(drawValues({grid.width, grid.height, sigma, 0, quantile(ofPoints(grid, sigma), 0.99), unit_}));
}

// The finest step of 1, 2 or 5 times a power of ten in which all depths fit into 16 bits.
void Outputs::writeDepth(std::uint32_t camera) const {
  const PointGrid grid = gridOf(camera);
  const std::vector<float> all = depthsOf(grid);
  const double deepest = quantile(ofPoints(grid, all), 1);
  const double step = roundStep(deepest, 65535);
  std::vector<std::uint16_t> levels(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (std::isfinite(all[i])) levels[i] = static_cast<std::uint16_t>(std::clamp(std::round(all[i] / step), 1.0, 65535.0));
  }
  const png::Text texts[] = {
      {"Unit", unit_}, {"Scale", fmt::format("{}", step)}, {"Description", "depth = level * Scale in Unit; 0: no point"}};
  write(nameOf(camera, "depth", "png"), png::encodePngGray16(grid.width, grid.height, levels, texts));
  write(nameOf(camera, "depth-preview", "png"), depthPreview(camera));
}

std::vector<ReportPicture> Outputs::pictures() const {
  std::vector<ReportPicture> pictures;
  for (std::uint32_t camera = 0; camera < result_.cameras(); ++camera) {
    const std::string whose = result_.cameras() == 1 ? "" : fmt::format(", camera {}", result_.task.channels[camera]);
    pictures.push_back({"Depth" + whose, depthPreview(camera)});
    pictures.push_back({"Expected standard deviation" + whose, sigmaPicture(camera)});
  }
  return pictures;
}

void Outputs::writeReport(std::span<const StepTime> times) const {
  std::vector<float> places;
  std::vector<float> intensity;
  for (std::size_t i = 0; i < grid_.pixels(); ++i) {
    if (!grid_.hasPoint(i)) continue;
    places.insert(places.end(), {grid_.points[3 * i], grid_.points[3 * i + 1], grid_.points[3 * i + 2]});
    intensity.push_back(grid_.intensity[i]);
  }
  const std::vector<float> sigma = ofPoints(grid_, sigma_);
  Report report{fmt::format("Scan of head {}", result_.task.calibration.serial), unit_, places};
  report.channels.push_back({"intensity", "levels", 0, 255, false, std::move(intensity)});
  report.channels.push_back({"sigma", unit_, 0, quantile(sigma, 0.99), false, sigma});
  if (result_.trueError) {
    const double end = 3 * result_.trueError->rootMeanSquare * scale_;
    report.channels.push_back({"error", unit_, -end, end, true, scaled(result_.errors)});
  }
  report.tables = {summaryOf(result_), reasonsOf(result_), timesOf(times)};
  report.pictures = pictures();
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
  outputs.writeRangesAndDepths();
  outputs.writeReport(times);
  outputs.writeFacts(times);
}

void writeRaw(const std::string& folder, const ScanTask& task, std::span<const Image> pictures) {
  const auto write = [&](const char* name, const std::string& text) {
    files::writeFile(files::inFolder(folder, name), Bytes(text.begin(), text.end()));
  };
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    files::writeFile(rawPath(folder, task, i), png::encodePngGray8(pictures[i].width, pictures[i].height, pictures[i].pixels));
  }
  write("calibration.json", task.calibrationText);
  if (!task.truthText.empty()) write("truth.json", task.truthText);
}

}  // namespace fringix::tool
