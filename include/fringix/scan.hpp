// scan.hpp - a thin C++ face of the C interface in scan.h (C++17 or later, header only).
//
//   fringix::scan::Scanner scanner(plan, fringix::scan::readCalibration(text));
//   fringix::scan::Cloud cloud = scanner.compute(0, pictures);
//
// What holds for the C interface holds here; scan.h tells it per function. What is different: a failure is an exception of type
// fringix::scan::Error, and a scanner ends with its object.
#ifndef FRINGIX_SCAN_HPP
#define FRINGIX_SCAN_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "scan.h"

namespace fringix::scan {

// A call that gave a status other than SLSCAN_OKAY. what() tells what was wrong.
class Error : public std::runtime_error {
 public:
  Error(const char* text, std::int32_t code) : std::runtime_error(text), code_(code) {}
  std::int32_t code() const noexcept { return code_; }

 private:
  std::int32_t code_;
};

inline void check(std::int32_t status) {
  if (status != SLSCAN_OKAY) throw Error(SLScanErrorText(), status);
}

inline SLScanPlan defaultPlan(std::int32_t projectorWidth, std::int32_t method = SLSCAN_GRAY_AND_PHASE) {
  SLScanPlan plan{};
  check(SLScanPlanDefaults(method, projectorWidth, &plan));
  return plan;
}

inline std::int32_t pictureCount(const SLScanPlan& plan) {
  std::int32_t count = 0;
  check(SLScanPlanPictureCount(&plan, &count));
  return count;
}

inline SLScanPicture picture(const SLScanPlan& plan, std::int32_t index) {
  SLScanPicture picture{};
  check(SLScanPlanPicture(&plan, index, &picture));
  return picture;
}

// A picture as one line of pixels, as SLSeqMakeFromLine8 takes it.
inline std::vector<std::uint8_t> line(const SLScanPlan& plan, std::int32_t index) {
  std::vector<std::uint8_t> line(plan.projectorWidth > 0 ? static_cast<std::size_t>(plan.projectorWidth) : 1);
  check(SLScanPlanLine(&plan, index, line.data(), static_cast<std::uint32_t>(line.size())));
  return line;
}

inline SLScanCalibration readCalibration(std::string_view text) {
  SLScanCalibration calibration{};
  check(SLScanCalibrationRead(text.data(), static_cast<std::uint32_t>(text.size()), &calibration));
  return calibration;
}

inline std::string write(const SLScanCalibration& calibration) {
  std::uint32_t length = 0;
  const std::int32_t status = SLScanCalibrationWrite(&calibration, nullptr, 0, &length);
  if (length == 0) check(status);  // otherwise only the room was missing
  std::string text(length + std::size_t{1}, '\0');
  check(SLScanCalibrationWrite(&calibration, &text[0], length + 1, &length));
  text.resize(length);
  return text;
}

inline SLScanSettings defaultSettings() {
  SLScanSettings settings{};
  check(SLScanSettingsDefaults(&settings));
  return settings;
}

// What a camera gives, with memory of its own.
struct Cloud {
  std::vector<float> points;
  std::vector<float> normals;  // empty when they were not wanted
  std::vector<float> sigma;
  std::vector<std::uint8_t> intensity;
  std::vector<std::uint8_t> reason;
  SLScanFindings findings{};

  Cloud() = default;
  Cloud(std::size_t pixels, bool withNormals)
      : points(3 * pixels), normals(withNormals ? 3 * pixels : 0), sigma(pixels), intensity(pixels), reason(pixels) {}

  std::size_t pixels() const noexcept { return sigma.size(); }

  // For the C functions; valid until the cloud changes.
  SLScanCloud buffers() noexcept {
    return {pixels(), points.data(), normals.empty() ? nullptr : normals.data(), sigma.data(), intensity.data(), reason.data(), nullptr,
            nullptr,  nullptr};
  }
};

class Scanner {
 public:
  Scanner(const SLScanPlan& plan, const SLScanCalibration& calibration, const SLScanSettings& settings = defaultSettings()) {
    SLScanner* made = nullptr;
    check(SLScannerAlloc(&plan, &calibration, &settings, &made));
    scanner_.reset(made);
    for (std::size_t i = 0; i < sizes_.size(); ++i) sizes_[i] = {calibration.cameras[i].width, calibration.cameras[i].height};
  }

  SLScanner* handle() const noexcept { return scanner_.get(); }  // for the C functions

  // All pictures of a camera, in the plan's order.
  Cloud compute(std::int32_t camera, const std::vector<const std::uint8_t*>& pictures, bool withNormals = true) const {
    Cloud cloud(pixelsOf(camera), withNormals);
    const SLScanCloud buffers = cloud.buffers();
    const auto [width, height] = sizeOf(camera);
    check(SLScanCompute(handle(), camera, pictures.data(), static_cast<std::int32_t>(pictures.size()), width, height, &buffers,
                        &cloud.findings));
    return cloud;
  }

  // Or one at a time.
  void add(std::int32_t camera, const std::uint8_t* picture, std::int32_t width, std::int32_t height) const {
    check(SLScanAddPicture(handle(), camera, picture, width, height));
  }
  Cloud finish(std::int32_t camera, bool withNormals = true) const {
    Cloud cloud(pixelsOf(camera), withNormals);
    const SLScanCloud buffers = cloud.buffers();
    check(SLScanFinish(handle(), camera, &buffers, &cloud.findings));
    return cloud;
  }
  void nextExposure(std::int32_t camera) const { check(SLScanNextExposure(handle(), camera)); }
  void useWindow(std::int32_t camera, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    check(SLScanUseWindow(handle(), camera, x, y, width, height));
    sizes_[static_cast<std::size_t>(camera)] = {width, height};
  }
  void forget(std::int32_t camera) const { check(SLScanForget(handle(), camera)); }

 private:
  struct Free {
    void operator()(SLScanner* scanner) const noexcept { SLScannerFree(scanner); }
  };

  struct PictureSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
  };

  // Of a camera that does not exist the first stands in: the library refuses the call.
  PictureSize sizeOf(std::int32_t camera) const noexcept {
    const auto index = static_cast<std::size_t>(camera);
    return sizes_[index < sizes_.size() ? index : 0];
  }
  std::size_t pixelsOf(std::int32_t camera) const noexcept {
    return static_cast<std::size_t>(sizeOf(camera).width) * static_cast<std::size_t>(sizeOf(camera).height);
  }

  std::array<PictureSize, 4> sizes_{};  // of each camera's pictures
  std::unique_ptr<SLScanner, Free> scanner_;
};

// The points of several cameras, one after the other without gaps; normals only when all clouds have them.
inline Cloud gather(std::vector<Cloud>& clouds) {
  std::vector<SLScanCloud> buffers;
  std::size_t most = 0;
  bool withNormals = true;
  for (Cloud& cloud : clouds) {
    buffers.push_back(cloud.buffers());
    most += cloud.pixels();
    withNormals = withNormals && !cloud.normals.empty();
  }
  Cloud gathered(most, withNormals);
  SLScanCloud room = gathered.buffers();
  room.pixels = most;
  std::uint64_t points = 0;
  check(SLScanGather(buffers.data(), static_cast<std::int32_t>(buffers.size()), &room, &points));
  const auto count = static_cast<std::size_t>(points);
  gathered.points.resize(3 * count);
  gathered.normals.resize(withNormals ? 3 * count : 0);
  gathered.sigma.resize(count);
  gathered.intensity.resize(count);
  gathered.reason.resize(count);
  return gathered;
}

}  // namespace fringix::scan

#endif
