// From pictures to points: any plan, settings and calibration that are taken, with any pictures.
//
// The input chooses the plan, what differs from a usual calibration and from the usual settings, and then the pictures' pixels.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "fringix/scan.h"
#include "fuzz/input.h"
#include "fuzz/target.h"

namespace fringix::fuzz::decode_target {

namespace {

constexpr std::int32_t mostPictures = 24;

struct FreeScanner {
  void operator()(SLScanner* scanner) const { SLScannerFree(scanner); }
};

double real(Input& in) {
  constexpr double borders[] = {0, -0.0, 1, -1, 0.5, 1e-300, 1e300, 90, 180, 1e9, 255, 256, 0.1, 10, INFINITY, NAN};
  const std::uint8_t kind = in.byte();
  if (kind < 128) return borders[kind % 16];
  return (kind - 192) * std::ldexp(1.0, static_cast<int>(in.byte() % 24) - 12);
}

SLScanOptics optics(std::int32_t width, std::int32_t height, double shift) {
  SLScanOptics optics{width, height, 40, 40, width / 2.0, height / 2.0, {}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {shift, 0, 0}};
  return optics;
}

SLScanCalibration calibration(Input& in) {
  SLScanCalibration calibration{};
  calibration.serial = 1001;
  std::memcpy(calibration.date, "2026-01-02", 11);
  calibration.cameraCount = 1;
  calibration.cameras[0] = optics(1 + in.byte() % 20, 1 + in.byte() % 12, 0);
  calibration.projector = optics(16 + in.byte() % 64, 8, -100);
  SLScanOptics& changed = in.flag() ? calibration.cameras[0] : calibration.projector;
  double* const places[] = {&changed.fx,
                            &changed.fy,
                            &changed.cx,
                            &changed.cy,
                            &changed.distortion[0],
                            &changed.distortion[3],
                            &changed.translation[0],
                            &changed.translation[2],
                            &changed.rotation[0],
                            &changed.rotation[5]};
  for (std::size_t i = in.byte() % 3; i > 0; --i) *places[in.byte() % std::size(places)] = real(in);
  return calibration;
}

SLScanPlan plan(Input& in, std::int32_t width) {
  SLScanPlan plan{};
  const std::int32_t method = in.byte() % 2;
  if (SLScanPlanDefaults(method, width, &plan) != SLSCAN_OKAY || in.flag()) plan = {method, width, in.number(), in.number()};
  return plan;
}

SLScanSettings settings(Input& in) {
  SLScanSettings settings{};
  SLScanSettingsDefaults(&settings);
  double* const places[] = {&settings.noise,    &settings.noisePerLevel, &settings.periodShare, &settings.grayMargin,
                            &settings.residual, &settings.unsteadiness,  &settings.sigma,       &settings.nearest,
                            &settings.farthest, &settings.edgeAngle,     &settings.outlier};
  for (std::size_t i = in.byte() % 4; i > 0; --i) *places[in.byte() % std::size(places)] = real(in);
  if (in.flag()) settings.saturation = in.number();
  if (in.flag()) settings.leastPatch = in.number();
  settings.clean = in.flag();
  settings.threads = 1;
  return settings;
}

// What is left of the input; where it is too little for all pictures, over and over with a growing step.
class Pictures {
 public:
  Pictures(Bytes bytes, std::size_t pixels, std::size_t count) : bytes_(bytes), pixels_(pixels), steps_(bytes.size() < pixels * count) {}
  const std::uint8_t* next() {
    for (std::uint8_t& pixel : pixels_) pixel = bytes_.empty() ? 0 : bytes_[place_++ % bytes_.size()];
    if (steps_) place_ += step_++;
    return pixels_.data();
  }

 private:
  Bytes bytes_;
  std::vector<std::uint8_t> pixels_;
  bool steps_;
  std::size_t place_ = 0;
  std::size_t step_ = 0;
};

// Exactly what a caller owes for each pixel.
struct Buffers {
  std::vector<float> points, normals, sigma, column, modulation, offset;
  std::vector<std::uint8_t> intensity, reason;

  explicit Buffers(std::size_t pixels)
      : points(3 * pixels),
        normals(3 * pixels),
        sigma(pixels),
        column(pixels),
        modulation(pixels),
        offset(pixels),
        intensity(pixels),
        reason(pixels) {}
  SLScanCloud cloud() {
    return {reason.size(), points.data(), normals.data(),    sigma.data(), intensity.data(),
            reason.data(), column.data(), modulation.data(), offset.data()};
  }
};

void checkCloud(const Buffers& buffers, const SLScanFindings& findings) {
  std::uint64_t points = 0;
  for (std::size_t i = 0; i < buffers.reason.size(); ++i) {
    const bool isPoint = buffers.reason[i] == SLSCAN_POINT;
    require(buffers.reason[i] < SLSCAN_REASONS, "reasons are known ones");
    require(isPoint == !std::isnan(buffers.points[3 * i]), "what has no reason against it is a point");
    points += isPoint ? 1U : 0U;
  }
  require(findings.counts[SLSCAN_POINT] == points, "points are counted");
}

void scan(SLScanner* scanner, const SLScanPlan& plan, const SLScanOptics& camera, Input& in) {
  std::int32_t count = 0;
  require(SLScanPlanPictureCount(&plan, &count) == SLSCAN_OKAY, "a plan that is taken has pictures");
  if (count > mostPictures) return;
  const std::size_t exposures = 1 + in.byte() % 8 / 7;
  Buffers buffers(static_cast<std::size_t>(camera.width) * static_cast<std::size_t>(camera.height));
  Pictures pictures(in.all(), buffers.reason.size(), exposures * static_cast<std::size_t>(count));
  for (std::size_t exposure = 0; exposure < exposures; ++exposure) {
    if (exposure > 0) require(SLScanNextExposure(scanner, 0) == SLSCAN_OKAY, "another exposure is taken");
    for (std::int32_t i = 0; i < count; ++i) {
      require(SLScanAddPicture(scanner, 0, pictures.next(), camera.width, camera.height) == SLSCAN_OKAY, "a picture is taken");
    }
  }
  const SLScanCloud cloud = buffers.cloud();
  SLScanFindings findings{};
  const std::int32_t result = SLScanFinish(scanner, 0, &cloud, &findings);
  require(result == SLSCAN_OKAY || result == SLSCAN_BAD_PICTURES, "pictures give points or are bad");
  checkCloud(buffers, findings);
}

void run(Bytes input) {
  Input in(input);
  const SLScanCalibration head = calibration(in);
  const SLScanPlan taken = plan(in, head.projector.width);
  const SLScanSettings limits = settings(in);
  SLScanner* made = nullptr;
  const std::int32_t result = SLScannerAlloc(&taken, &head, &limits, &made);
  const std::unique_ptr<SLScanner, FreeScanner> scanner(made);
  require((result == SLSCAN_OKAY) == (made != nullptr), "a scanner or a reason why not");
  require(result == SLSCAN_OKAY || std::strlen(SLScanErrorText()) > 0, "a refusal says why");
  if (made != nullptr) scan(made, taken, head.cameras[0], in);
}

// A plane 400 mm before the camera, by both methods: 16 x 4 pixels and 80 columns.
std::string seedOf(char method) {
  constexpr std::int32_t columns = 80;
  constexpr char head[] = {15, 3, columns - 16, 0, 0};  // the usual calibration
  const char choices[] = {method, 0, 0, 0, 0, 1, 0};    // the usual plan and settings
  std::string seed(head, sizeof head);
  seed.append(choices, sizeof choices);
  SLScanPlan plan{};
  std::int32_t count = 0;
  SLScanPlanDefaults(method, columns, &plan);
  SLScanPlanPictureCount(&plan, &count);
  for (std::int32_t i = 0; i < count; ++i) {
    std::string line(columns, '\0');
    SLScanPlanLine(&plan, i, reinterpret_cast<std::uint8_t*>(line.data()), columns);
    for (char& pixel : line) pixel = static_cast<char>(20 + static_cast<std::uint8_t>(pixel) * 4 / 5);
    for (int row = 0; row < 4; ++row) seed += line.substr(22, 16);
  }
  return seed;
}

std::vector<std::string> seeds() { return {seedOf(0), seedOf(1)}; }

const Registered target("decode", run, seeds);

}  // namespace

}  // namespace fringix::fuzz::decode_target
