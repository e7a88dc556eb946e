#include "head/model/calibration_block.h"

#include <chrono>
#include <string>

#include "head/geometry/mount.h"
#include "head/model/block_json.h"
#include "times/wall_time.h"

namespace fringix::head {

namespace {

Json toJson(const Optics& optics) {
  const Lens& lens = optics.lens();
  const Rotation& rotation = optics.pose().rotation;
  return {{"width", optics.size().width},
          {"height", optics.size().height},
          {"fx", lens.fx},
          {"fy", lens.fy},
          {"cx", lens.cx},
          {"cy", lens.cy},
          {"distortion", lens.distortion},
          {"rotation", {toJson(rotation.x), toJson(rotation.y), toJson(rotation.z)}},
          {"translation", toJson(optics.pose().translation)}};
}

}  // namespace

Block calibrationBlock(const HeadSettings& settings) {
  const std::string today = universalText(std::chrono::system_clock::now(), "%Y-%m-%d");
  Json block{{"format", "fringix-calibration"}, {"version", 1}, {"unit", "mm"}, {"serial", settings.serial}, {"date", today}};
  for (std::uint32_t channel = 0; channel < channelCount; ++channel)
    block["cameras"].push_back(toJson(cameraOptics(settings.camera, channel)));
  block["projector"] = toJson(projectorOptics(settings.projector));
  const std::string text = block.dump(2) + "\n";
  return {text.begin(), text.end()};
}

}  // namespace fringix::head
