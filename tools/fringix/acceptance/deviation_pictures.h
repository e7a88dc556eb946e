// What the surfaces of artefacts look like to a head, in colours.
#pragma once

#include <span>
#include <string>

#include "acceptance/position.h"

namespace fringix::tool {

// Writes a picture of each position's deviations, "sphere-01.png" and so on, and "deviations.png" with all of them, into a folder. All
// have the same scale.
void writeDeviations(const std::string& folder, std::span<const Position> positions);

}  // namespace fringix::tool
