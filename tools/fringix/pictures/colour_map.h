// Colours for numbers: steps of the same size look equally large, also where only the lightness is seen.
#pragma once

#include <array>
#include <cstdint>

namespace fringix::tool {

using Colour = std::array<std::uint8_t, 3>;  // red, green, blue, as sRGB has them

// From dark blue over green to bright yellow, each colour lighter than the one before; for quantities from low to high. `share` is
// 0 to 1, and what lies outside is taken for the nearer end.
Colour evenColour(double share);

// From blue over near white to red, both ends equally dark; for deviations, with none at 0.5.
Colour deviationColour(double share);

}  // namespace fringix::tool
