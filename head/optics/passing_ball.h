// Something that moves while a head measures: a small ball that passes to and fro between the head and the scene.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/light_map.h"
#include "head/scene/scene.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

// Where it is at a moment; from one moment to the next it moves by settings.motion. Where it starts follows settings.noiseSeed.
Sphere passingBall(const HeadSettings& settings, std::uint64_t moment);

// The pixels that it may cover or shade.
std::vector<std::size_t> pixelsChangedBy(const Sphere& ball, const LightMap& map);

}  // namespace fringix::head
