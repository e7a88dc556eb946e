#include "head/optics/sensor_light.h"

#include <algorithm>
#include <array>

#include "head/optics/blur.h"

namespace fringix::head {

namespace {

constexpr std::size_t stripLength = 256;  // pixels that are looked up before they are brightened: the second step has no look-ups

std::uint16_t exposed(float base, float factor, std::uint32_t light, std::uint16_t reflectance) {
  const float sum = base + factor * static_cast<float>(static_cast<std::int32_t>(light)) * static_cast<float>(reflectance);
  return static_cast<std::uint16_t>(static_cast<std::int32_t>(sum > 65535 ? 65535.0F : sum));
}

}  // namespace

SensorLight::SensorLight(const LightMap& map, const Light& light, const Brightening& brightening)
    : map_(map),
      base_(static_cast<float>(brightening.surroundings * ExposedImage::fractions + 0.5)),
      factor_(static_cast<float>(brightening.projector * ExposedImage::fractions / (256 * LitPixel::fullReflectance))) {
  if (light.kind != LightKind::image) profile_ = blurredProfile(light.values, map.blurs);
}

void SensorLight::fill(const Light& light, ExposedImage& image) const {
  image.size = map_.view.camera().size();
  image.pixels.resize(map_.column.size());
  for (std::size_t first = 0; first < image.pixels.size(); first += stripLength)
    fillStrip(light, first, std::min(stripLength, image.pixels.size() - first), image.pixels.data() + first);
}

void SensorLight::fillStrip(const Light& light, std::size_t first, std::size_t count, std::uint16_t* row) const {
  std::array<std::uint32_t, stripLength> arriving;
  const std::uint32_t* codes = (light.kind == LightKind::columns ? map_.column : map_.row).data() + first;
  if (light.kind == LightKind::image)
    for (std::size_t i = 0; i < count; ++i) arriving[i] = brightness(light, map_.column[first + i], map_.row[first + i]);
  else
    for (std::size_t i = 0; i < count; ++i) arriving[i] = tabled(codes[i]);
  const std::uint16_t* reflectance = map_.reflectance.data() + first;
  for (std::size_t i = 0; i < count; ++i) row[i] = exposed(base_, factor_, arriving[i], reflectance[i]);
}

std::uint16_t SensorLight::at(const Light& light, const LitPixel& pixel) const {
  return exposed(base_, factor_, brightness(light, pixel.column, pixel.row), pixel.reflectance);
}

std::uint32_t SensorLight::brightness(const Light& light, std::uint32_t column, std::uint32_t row) const {
  if (light.kind == LightKind::columns) return tabled(column);
  if (light.kind == LightKind::rows) return tabled(row);
  return blurredLight(light, {column, light.size.width}, {row, light.size.height});
}

std::uint32_t SensorLight::tabled(std::uint32_t code) const {
  constexpr std::uint32_t whole = 1U << BlurredPlace::fractionBits;
  const Brightness* place = profile_.data() + (code >> BlurredPlace::fractionBits);
  const std::uint32_t part = code % whole;
  return (place[0] * (whole - part) + place[1] * part + whole / 2) >> BlurredPlace::fractionBits;
}

}  // namespace fringix::head
