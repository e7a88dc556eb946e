#include "pictures/colour_map.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace fringix::tool {
namespace {

// A colour of the Oklab space, whose distances are those that people see.
struct Oklch {
  double lightness;
  double chroma;
  double hue;  // degrees
};

std::array<double, 3> toLinearRgb(const Oklch& colour) {
  const double angle = colour.hue * std::numbers::pi / 180;
  const double a = colour.chroma * std::cos(angle);
  const double b = colour.chroma * std::sin(angle);
  const double l = std::pow(colour.lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const double m = std::pow(colour.lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const double s = std::pow(colour.lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  return {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s, -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
          -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

bool isShown(const std::array<double, 3>& rgb) {
  return std::all_of(rgb.begin(), rgb.end(), [](double part) { return part >= 0 && part <= 1; });
}

std::uint8_t encode(double linear) {
  const double part = std::clamp(linear, 0.0, 1.0);
  const double encoded = part <= 0.0031308 ? 12.92 * part : 1.055 * std::pow(part, 1 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(std::lround(encoded * 255));
}

// The colour itself, or the most colourful one of its lightness and hue that a screen has.
Colour shown(Oklch colour) {
  std::array<double, 3> rgb = toLinearRgb(colour);
  for (; !isShown(rgb) && colour.chroma > 0.001; rgb = toLinearRgb(colour)) colour.chroma *= 0.98;
  return {encode(rgb[0]), encode(rgb[1]), encode(rgb[2])};
}

}  // namespace

Colour evenColour(double share) {
  const double t = std::clamp(share, 0.0, 1.0);
  return shown({0.27 + 0.65 * t, 0.11, 285 - 180 * t});
}

Colour deviationColour(double share) {
  const double t = std::clamp(share, 0.0, 1.0) * 2 - 1;
  return shown({0.95 - 0.47 * std::abs(t), 0.17 * std::abs(t), t < 0 ? 255.0 : 27.0});
}

}  // namespace fringix::tool
