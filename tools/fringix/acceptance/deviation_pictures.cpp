#include "acceptance/deviation_pictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "acceptance/verdict.h"
#include "files/files.h"
#include "pictures/contact_sheet.h"
#include "pictures/value_picture.h"
#include "png/png_writer.h"

namespace fringix::tool {
namespace {

// Where 95 % of the deviations lie, about, at the position where they reach farthest.
double endOfScale(std::span<const Position> positions) {
  double thickest = 0;
  for (const Position& position : positions) {
    for (const Reading& reading : position.readings) {
      if (reading.figure == Figure::form95 || reading.figure == Figure::flatness95) thickest = std::max(thickest, reading.value);
    }
  }
  return roundStep(thickest / 2, 1);
}

std::string labelOf(const Position& position) {
  const Reading& first = position.readings.front();
  return fmt::format("{} {}: {} {:.3f} mm", kindOf(position.artefact).name, position.number, signOf(first.figure), first.value);
}

void write(const std::string& folder, const std::string& name, const png::Raster& raster) {
  files::writeFile(files::inFolder(folder, name), png::encodePngRgb24(raster.width, raster.height, raster.samples));
}

}  // namespace

void writeDeviations(const std::string& folder, std::span<const Position> positions) {
  const double end = endOfScale(positions);
  std::vector<LabelledPicture> pictures;
  for (const Position& position : positions) {
    const DeviationMap& map = position.deviations;
    pictures.push_back({labelOf(position), drawValues({map.width, map.height, map.values, -end, end, "mm", deviationColour})});
    write(folder, fmt::format("{}-{:02}.png", kindOf(position.artefact).name, position.number), pictures.back().raster);
  }
  write(folder, "deviations.png", makeContactSheet(pictures, {}));
}

}  // namespace fringix::tool
