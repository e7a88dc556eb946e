// A small simulated head that is scanned by the built program, and what the scan leaves.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "fringix/scan.hpp"
#include "head/model/calibration_block.h"
#include "head/serving/head_server.h"
#include "program.h"
#include "scanning/truth.h"
#include "support/json.h"

namespace fringix::test {

inline head::HeadSettings scannedHead() {
  head::HeadSettings settings;
  settings.address = "127.0.0.1";
  settings.serial = 4711;
  settings.camera = {320, 256};
  settings.projector = {640, 400};
  settings.imageTime = std::chrono::milliseconds(0);
  return settings;
}

class FringixScan : public testing::Test {
 protected:
  explicit FringixScan(const head::HeadSettings& settings = scannedHead()) : settings_(settings) { startAnew(); }

  // The noise of a head is the same for the same pictures: one that is started anew takes the same ones again.
  void startAnew() {
    server_.reset();
    server_ = std::make_unique<head::HeadServer>(settings_);
    server_->start();
  }

  Outcome scan(const std::string& arguments, const std::string& folder = "out") const {
    return runProgram(FRINGIX_TOOL, "scan " + arguments + " -o " + inQuotes(scratch_ / folder));
  }
  Json facts(const std::string& folder = "out") const { return Json(readBytes(scratch_ / folder / "scan.json")); }
  std::string file(const std::string& name, const std::string& folder = "out") const { return readBytes(scratch_ / folder / name); }

  // What another head would tell of itself, in other.json.
  void keepCalibrationOf(head::Size camera, head::Size projector, std::int32_t serial) const {
    writeBytes(scratch_ / "other.json", writtenCalibrationOf(camera, projector, serial, 2));
  }
  static std::string writtenCalibrationOf(head::Size camera, head::Size projector, std::int32_t serial, std::int32_t cameras) {
    head::HeadSettings other = scannedHead();
    other.camera = camera;
    other.projector = projector;
    other.serial = serial;
    const head::Block block = head::calibrationBlock(other);
    SLScanCalibration calibration = scan::readCalibration({reinterpret_cast<const char*>(block.data()), block.size()});
    calibration.cameraCount = cameras;
    return scan::write(calibration);
  }

  const ScratchFolder scratch_;
  const head::HeadSettings settings_;
  std::unique_ptr<head::HeadServer> server_;
};

// A cloud.pcd read back: 8 numbers for each pixel. This runs where the low byte comes first, as it does in the file.
class ScannedCloud {
 public:
  explicit ScannedCloud(const std::string& file) : entries_(file.substr(file.find("DATA binary\n") + 12)) {}

  std::size_t pixels() const { return entries_.size() / size; }
  std::string bytes(std::size_t pixel) const { return entries_.substr(size * pixel, size); }
  bool hasPoint(std::size_t pixel) const { return std::isfinite(number(pixel, 0)); }
  tool::Place point(std::size_t pixel) const { return {number(pixel, 0), number(pixel, 1), number(pixel, 2)}; }
  double distance(std::size_t pixel) const { return std::hypot(number(pixel, 0), number(pixel, 1), number(pixel, 2)); }
  double sigma(std::size_t pixel) const { return number(pixel, 7); }

 private:
  static constexpr std::size_t size = 32;

  float number(std::size_t pixel, std::size_t field) const {
    float number = 0;
    std::memcpy(&number, entries_.data() + size * pixel + 4 * field, 4);
    return number;
  }

  std::string entries_;
};

}  // namespace fringix::test
