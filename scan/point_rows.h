// Rows of an organised cloud, taken apart into coordinates, so that loops over them become vector code.
#pragma once

#include <cstddef>
#include <limits>
#include <vector>

namespace fringix::scan {

// A row with room for `margin` places that hold no point on either side.
class PointRow {
 public:
  static constexpr std::size_t margin = 4;

  explicit PointRow(std::size_t width)
      : x_(width + 2 * margin, nothing()), y_(width + 2 * margin, nothing()), z_(width + 2 * margin, nothing()) {}

  // The coordinates at column 0; the margins may be read, too.
  const float* x() const noexcept { return x_.data() + margin; }
  const float* y() const noexcept { return y_.data() + margin; }
  const float* z() const noexcept { return z_.data() + margin; }

  void load(const float* points) noexcept {
    const std::size_t width = x_.size() - 2 * margin;
    float* const x = x_.data() + margin;
    float* const y = y_.data() + margin;
    float* const z = z_.data() + margin;
    for (std::size_t i = 0; i < width; ++i) {
      x[i] = points[3 * i];
      y[i] = points[3 * i + 1];
      z[i] = points[3 * i + 2];
    }
  }
  void loadNothing() noexcept {
    for (auto* const values : {&x_, &y_, &z_}) values->assign(values->size(), nothing());
  }

 private:
  static constexpr float nothing() { return std::numeric_limits<float>::quiet_NaN(); }

  std::vector<float> x_;
  std::vector<float> y_;
  std::vector<float> z_;
};

// The rows about a middle one, which moves down through a cloud; above the first and below the last there is nothing.
class RowWindow {
 public:
  RowWindow(const float* points, std::size_t width, std::size_t height, std::size_t reach, std::size_t middle)
      : points_(points), width_(width), height_(height), reach_(reach), rows_(2 * reach + 1, PointRow(width)), middle_(middle) {
    for (std::size_t i = 0; i < rows_.size(); ++i) load(middle + i);
  }

  // The row `offset` rows below the middle one; `offset` is within -reach to reach.
  const PointRow& operator[](std::ptrdiff_t offset) const noexcept {
    return rows_[(middle_ + reach_ + static_cast<std::size_t>(offset)) % rows_.size()];
  }
  void moveDown() noexcept {
    ++middle_;
    load(middle_ + rows_.size() - 1);
  }

 private:
  // Rows are counted from `reach` above the cloud's first.
  void load(std::size_t shifted) noexcept {
    PointRow& row = rows_[shifted % rows_.size()];
    if (shifted < reach_ || shifted - reach_ >= height_) {
      row.loadNothing();
    } else {
      row.load(points_ + 3 * width_ * (shifted - reach_));
    }
  }

  const float* points_;
  std::size_t width_;
  std::size_t height_;
  std::size_t reach_;
  std::vector<PointRow> rows_;
  std::size_t middle_;
};

}  // namespace fringix::scan
