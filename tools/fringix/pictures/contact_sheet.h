// Several pictures on one sheet, each with a label below it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "png/raster.h"

namespace fringix::tool {

struct LabelledPicture {
  std::string label;  // UTF-8; cut where it is wider than the picture's place
  png::Raster raster;
};

struct SheetLayout {
  std::uint32_t columns = 0;         // pictures side by side; 0: as many as make the sheet about as many pictures wide as high
  std::uint32_t pictureWidth = 320;  // wider pictures are reduced to this width
};

// The sheet in RGB. There is at least one picture.
png::Raster makeContactSheet(std::span<const LabelledPicture> pictures, const SheetLayout& layout);

}  // namespace fringix::tool
