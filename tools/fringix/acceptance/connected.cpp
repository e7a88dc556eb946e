#include "acceptance/connected.h"

#include <algorithm>

namespace fringix::tool {
namespace {

class Flood {
 public:
  Flood(std::span<const std::uint8_t> pixels, std::size_t width)
      : left_(pixels.begin(), pixels.end()), width_(width), height_(width == 0 ? 0 : pixels.size() / width) {}

  // What hangs together with a pixel, which is taken out of the picture. Empty when it is none or has been taken.
  std::vector<std::size_t> take(std::size_t first) {
    std::vector<std::size_t> part;
    takePixel(first, part);
    for (std::size_t next = 0; next < part.size(); ++next) takeAround(part[next], part);
    return part;
  }

 private:
  void takePixel(std::size_t pixel, std::vector<std::size_t>& part) {
    if (left_[pixel] == 0) return;
    left_[pixel] = 0;
    part.push_back(pixel);
  }

  void takeAround(std::size_t pixel, std::vector<std::size_t>& part) {
    const std::size_t x = pixel % width_;
    const std::size_t y = pixel / width_;
    for (std::size_t row = y == 0 ? 0 : y - 1; row <= std::min(y + 1, height_ - 1); ++row) {
      for (std::size_t column = x == 0 ? 0 : x - 1; column <= std::min(x + 1, width_ - 1); ++column) takePixel(row * width_ + column, part);
    }
  }

  std::vector<std::uint8_t> left_;
  std::size_t width_;
  std::size_t height_;
};

}  // namespace

std::vector<std::size_t> largestConnected(std::span<const std::uint8_t> pixels, std::size_t width) {
  Flood flood(pixels, width);
  std::vector<std::size_t> largest;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    std::vector<std::size_t> part = flood.take(i);
    if (part.size() > largest.size()) largest = std::move(part);
  }
  std::sort(largest.begin(), largest.end());
  return largest;
}

}  // namespace fringix::tool
