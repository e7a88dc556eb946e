#include "benchmark/diagram.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "benchmark/axis.h"
#include "pictures/colour_map.h"
#include "pictures/lettering.h"

namespace fringix::tool {
namespace {

constexpr std::uint32_t margin = 28;
constexpr std::uint32_t lineHeight = letterHeight + 5;
constexpr std::uint32_t plotWidth = 600;
constexpr std::uint32_t plotHeight = 170;
constexpr std::uint32_t percentWidth = 6 * letterPitch;  // "100 %" to the right
constexpr std::uint32_t fieldWidth = plotWidth + percentWidth;
constexpr std::uint32_t fieldHeight = 2 * lineHeight + plotHeight + lineHeight + 8;
constexpr std::uint32_t tickLength = 6;
constexpr std::uint32_t barPitch = 5;
constexpr std::uint32_t barWidth = 4;
constexpr std::uint32_t headerHeight = 3 * lineHeight + margin;
constexpr std::uint32_t columns = 2;  // of fields
constexpr std::uint8_t paper = 24;
constexpr std::uint8_t grid = 60;
constexpr std::uint8_t faint = 160;
constexpr std::uint8_t ink = 235;

Colour gray(std::uint8_t shade) { return {shade, shade, shade}; }

struct Box {
  std::uint32_t left;
  std::uint32_t top;
  std::uint32_t width;
  std::uint32_t height;
};

void fill(png::Raster& raster, const Box& box, const Colour& colour) {
  for (std::uint32_t y = box.top; y < box.top + box.height; ++y)
    for (std::uint32_t x = box.left; x < box.left + box.width; ++x) std::copy(colour.begin(), colour.end(), raster.pixel(x, y));
}

void write(png::Raster& raster, std::uint32_t x, std::uint32_t y, const std::string& text, std::uint8_t shade) {
  drawText(raster, x, y, charactersOf(text), shade);
}

std::string figuresOf(const Timing& timing) {
  const auto share = [](const char* name, const std::optional<double>& time) {
    return time ? fmt::format("  {} {:.3f}", name, *time) : "";
  };
  return fmt::format("median {:.3f}{}{}  worst {:.3f} ms", timing.median, share("p95", timing.p95), share("p99", timing.p99), timing.worst);
}

// A single call that took long would leave no room for all the others.
double longestShown(const Timing& timing) {
  return timing.p99 ? std::min(timing.worst, *timing.p99 + 0.25 * (*timing.p99 - timing.least)) : timing.worst;
}

// One call: title, figures, and the plot with its axis.
class Field {
 public:
  Field(png::Raster& raster, const Measured& measured, std::uint32_t left, std::uint32_t top)
      : raster_(raster), measured_(measured), axis_(measured.timing.least, longestShown(measured.timing)), left_(left), top_(top) {}

  void draw() const {
    const std::size_t beyond = measured_.sorted.size() - countUpTo(axis_.timeAt(1));
    const std::string hidden = beyond > 0 ? fmt::format(", {} beyond the axis", beyond) : "";
    write(raster_, left_, top_, fmt::format("{}, {} samples{}", measured_.what, measured_.timing.samples, hidden), ink);
    write(raster_, left_, top_ + lineHeight, figuresOf(measured_.timing), faint);
    drawGrid();
    drawBars();
    drawCumulative();
    drawTicks();
  }

 private:
  std::uint32_t plotTop() const { return top_ + 2 * lineHeight + 4; }
  std::uint32_t plotBottom() const { return plotTop() + plotHeight; }
  std::uint32_t rowOf(double share) const { return plotBottom() - 1 - static_cast<std::uint32_t>(std::lround(share * (plotHeight - 1))); }

  void drawGrid() const {
    for (const double share : {0.5, 0.95}) {
      fill(raster_, {left_, rowOf(share), plotWidth, 1}, gray(grid));
      write(raster_, left_ + plotWidth + letterPitch / 2, rowOf(share) - letterHeight / 2, fmt::format("{:.0f} %", 100 * share), faint);
    }
    fill(raster_, {left_, plotBottom(), plotWidth, 1}, gray(faint));
  }

  std::size_t countUpTo(double time) const {
    return static_cast<std::size_t>(std::upper_bound(measured_.sorted.begin(), measured_.sorted.end(), time) - measured_.sorted.begin());
  }

  std::vector<std::size_t> counts() const {
    std::vector<std::size_t> counts;
    std::size_t before = 0;
    for (std::uint32_t x = 0; x < plotWidth; x += barPitch) {
      const std::size_t upTo = countUpTo(axis_.timeAt(static_cast<double>(x + barPitch) / plotWidth));
      counts.push_back(upTo - before);
      before = upTo;
    }
    return counts;
  }

  Colour colourOf(double time) const {
    const Timing& timing = measured_.timing;
    if (timing.p99 && time > *timing.p99) return deviationColour(0.97);
    return evenColour(timing.p95 && time > *timing.p95 ? 0.9 : 0.45);
  }

  // What is rare is seen, too.
  void drawBars() const {
    const std::vector<std::size_t> all = counts();
    const auto most = static_cast<double>(*std::max_element(all.begin(), all.end()));
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i] == 0) continue;
      const auto height = std::max(3U, static_cast<std::uint32_t>(std::lround(static_cast<double>(all[i]) / most * plotHeight)));
      const auto x = static_cast<std::uint32_t>(i) * barPitch;
      fill(raster_, {left_ + x, plotBottom() - height, barWidth, height}, colourOf(axis_.timeAt(static_cast<double>(x) / plotWidth)));
    }
  }

  void drawCumulative() const {
    std::uint32_t before = rowOf(0);
    for (std::uint32_t x = 0; x < plotWidth; ++x) {
      const double share =
          static_cast<double>(countUpTo(axis_.timeAt((x + 1.0) / plotWidth))) / static_cast<double>(measured_.sorted.size());
      const std::uint32_t row = rowOf(share);
      fill(raster_, {left_ + x, row, 1, before - row + 2}, gray(ink));
      before = row;
    }
  }

  void drawTicks() const {
    std::uint32_t free = left_;
    for (const Axis::Tick& tick : axis_.ticks()) {
      const auto x = left_ + static_cast<std::uint32_t>(std::lround(axis_.shareOf(tick.time) * (plotWidth - 1)));
      fill(raster_, {x, plotBottom(), 1, tickLength}, gray(faint));
      const int digits = std::max(0, static_cast<int>(std::ceil(-std::log10(tick.spacing) - 1e-9)));
      const std::string label = fmt::format("{:.{}f}", tick.time, digits);
      const auto width = static_cast<std::uint32_t>(label.size()) * letterPitch;
      const std::uint32_t begin = std::max(x, left_ + width / 2) - width / 2;
      if (begin < free || begin + width > left_ + plotWidth) continue;
      write(raster_, begin, plotBottom() + tickLength + 2, label, faint);
      free = begin + width + letterPitch;
    }
    write(raster_, left_ + plotWidth + letterPitch / 2, plotBottom() + tickLength + 2, "ms", faint);
  }

  png::Raster& raster_;
  const Measured& measured_;
  const Axis axis_;
  const std::uint32_t left_;
  const std::uint32_t top_;
};

void drawHeader(png::Raster& raster, const Findings& findings) {
  const BenchedHead& head = findings.head;
  const std::string model = head.model.empty() ? "" : ", " + head.model;
  write(raster, margin, margin,
        fmt::format("fringix bench {}: head {}{}, protocol version {}", head.address, head.serial, model, head.protocolVersion), ink);
  write(raster, margin, margin + lineHeight, fmt::format("{}, library {}, {}", findings.system, findings.libraryVersion, findings.date),
        faint);
  write(raster, margin, margin + 2 * lineHeight,
        "bars: how many calls took how long; light: the slowest 5 of 100, red: the slowest one; line: how many took no longer", faint);
}

}  // namespace

png::Raster drawDistributions(const Findings& findings) {
  std::vector<const Measured*> drawn;
  for (const Measured& one : findings.measured)
    if (one.sorted.size() > 1) drawn.push_back(&one);
  const auto count = static_cast<std::uint32_t>(drawn.size());
  const std::uint32_t rows = (count + columns - 1) / columns;
  png::Raster raster =
      png::filledRaster(columns * (fieldWidth + margin) + margin, margin + headerHeight + rows * (fieldHeight + margin), 3, paper);
  drawHeader(raster, findings);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t left = margin + i % columns * (fieldWidth + margin);
    Field(raster, *drawn[i], left, margin + headerHeight + i / columns * (fieldHeight + margin)).draw();
  }
  return raster;
}

}  // namespace fringix::tool
