#include "scanning/scan_task.h"

#include <fmt/format.h>

#include "console/explain.h"

namespace fringix::tool {
namespace {

constexpr std::uint32_t neighbours = 2;  // of a normal, at points that a neighbour's edge may take away

std::uint32_t marginOf(const SLScanSettings& settings) {
  return settings.clean == 0 ? neighbours : std::max(static_cast<std::uint32_t>(settings.leastPatch), neighbours);
}

}  // namespace

Size cameraSizeOf(const ScanTask& task) {
  const SLScanOptics& camera = task.calibration.cameras[task.channels.front()];
  return {static_cast<std::uint32_t>(camera.width), static_cast<std::uint32_t>(camera.height)};
}

Region wantedRegion(const ScanTask& task) {
  const Size size = cameraSizeOf(task);
  return task.roi.value_or(Region{0, 0, size.width, size.height});
}

Region neededRegion(const ScanTask& task) {
  const Size size = cameraSizeOf(task);
  const Region wanted = wantedRegion(task);
  const std::uint32_t margin = marginOf(task.settings);
  const std::uint32_t left = wanted.x - std::min(wanted.x, margin);
  const std::uint32_t top = wanted.y - std::min(wanted.y, margin);
  const std::uint32_t right = std::min(wanted.x + wanted.width + margin, size.width);
  const std::uint32_t bottom = std::min(wanted.y + wanted.height + margin, size.height);
  return {left, top, right - left, bottom - top};
}

void requireRegion(const ScanTask& task) {
  const Size size = cameraSizeOf(task);
  const Region wanted = wantedRegion(task);
  const bool inside =
      wanted.x < size.width && wanted.y < size.height && wanted.width <= size.width - wanted.x && wanted.height <= size.height - wanted.y;
  if (inside) return;
  throw Failure({fmt::format("a region of {} x {} pixels at {}, {} does not lie within the camera's {} x {}", wanted.width, wanted.height,
                             wanted.x, wanted.y, size.width, size.height),
                 "Give another one with --roi X,Y,WxH."});
}

}  // namespace fringix::tool
