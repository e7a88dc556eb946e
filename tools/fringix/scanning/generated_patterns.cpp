#include "scanning/generated_patterns.h"

namespace fringix::tool {
namespace {

constexpr std::uint8_t columnsOfHalfPeriod = 4;
constexpr std::uint8_t bitsOfHalfPeriod = 2;
constexpr std::uint8_t uniform = 0;
constexpr std::uint8_t alongColumns = 0;

}  // namespace

SLScanPlan generatedPlan(std::int32_t projectorWidth) {
  SLScanPlan plan = scan::defaultPlan(projectorWidth);
  plan.period = 2 * columnsOfHalfPeriod;
  return plan;
}

void generatePicture(const Device& head, std::uint32_t sequence, const SLScanPlan& plan, std::int32_t index) {
  const SLScanPicture picture = scan::picture(plan, index);
  const auto image = static_cast<std::uint8_t>(index);
  const auto number = static_cast<std::uint8_t>(picture.number);
  if (picture.kind == SLSCAN_WHITE) head.makeImage(sequence, image, uniform, 255, 0);
  if (picture.kind == SLSCAN_BLACK) head.makeImage(sequence, image, uniform, 0, 0);
  if (picture.kind == SLSCAN_GRAY)
    head.makeGrayCode(sequence, image, static_cast<std::uint8_t>(number + bitsOfHalfPeriod), alongColumns, 0);
  if (picture.kind == SLSCAN_PHASE && number == 0)
    head.makePhase(sequence, image, static_cast<std::uint8_t>(plan.steps), static_cast<std::uint8_t>(plan.period), alongColumns);
}

SLScanCalibration forGeneratedPatterns(SLScanCalibration calibration) {
  calibration.projector.cx -= 0.5;
  return calibration;
}

}  // namespace fringix::tool
