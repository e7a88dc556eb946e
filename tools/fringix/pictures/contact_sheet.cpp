#include "pictures/contact_sheet.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "pictures/lettering.h"

namespace fringix::tool {
namespace {

constexpr std::uint32_t margin = 12;
constexpr std::uint32_t labelHeight = letterHeight + margin / 2;
constexpr std::uint8_t paper = 40;
constexpr std::uint8_t ink = 230;

png::Raster thumbnail(const png::Raster& raster, std::uint32_t width) {
  if (raster.width <= width) return png::toRgb(raster);
  const std::uint64_t height = std::uint64_t{raster.height} * width / raster.width;
  return png::toRgb(png::reduced(raster, width, std::max(1U, static_cast<std::uint32_t>(height))));
}

std::size_t columnCount(const SheetLayout& layout, std::size_t pictures) {
  const auto square = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(pictures))));
  return std::min(layout.columns == 0 ? square : std::size_t{layout.columns}, pictures);
}

// One row of the sheet after the other; a row is as high as its highest picture.
class Sheet {
 public:
  Sheet(std::size_t columns, std::uint32_t pictureWidth) : columns_(columns), place_(pictureWidth + margin) {}

  png::Raster draw(std::span<const LabelledPicture> pictures, const std::vector<png::Raster>& thumbnails) const {
    const std::vector<std::uint32_t> tops = rowTops(thumbnails);
    png::Raster sheet = png::filledRaster(static_cast<std::uint32_t>(columns_) * place_ + margin, tops.back(), 3, paper);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      const std::uint32_t x = static_cast<std::uint32_t>(i % columns_) * place_ + margin;
      const std::uint32_t y = tops[i / columns_];
      png::paste(sheet, thumbnails[i], x, y);
      const std::u32string label = charactersOf(pictures[i].label).substr(0, (place_ - margin) / letterPitch);
      drawText(sheet, x, y + thumbnails[i].height + margin / 2, label, ink);
    }
    return sheet;
  }

 private:
  // Where each row begins, and last where the sheet ends.
  std::vector<std::uint32_t> rowTops(const std::vector<png::Raster>& thumbnails) const {
    std::vector<std::uint32_t> tops{margin};
    for (std::size_t first = 0; first < thumbnails.size(); first += columns_) {
      std::uint32_t height = 0;
      for (std::size_t i = first; i < std::min(first + columns_, thumbnails.size()); ++i) height = std::max(height, thumbnails[i].height);
      tops.push_back(tops.back() + height + labelHeight + margin);
    }
    return tops;
  }

  std::size_t columns_;
  std::uint32_t place_;  // of a picture, with the margin to the next
};

}  // namespace

png::Raster makeContactSheet(std::span<const LabelledPicture> pictures, const SheetLayout& layout) {
  std::vector<png::Raster> thumbnails;
  for (const LabelledPicture& picture : pictures) thumbnails.push_back(thumbnail(picture.raster, layout.pictureWidth));
  return Sheet(columnCount(layout, pictures.size()), layout.pictureWidth).draw(pictures, thumbnails);
}

}  // namespace fringix::tool
