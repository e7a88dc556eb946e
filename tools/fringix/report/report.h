// A scan as one HTML file that needs no network: the cloud to turn and to measure in, pictures, tables.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fringix::tool {

// A quantity that the points can be coloured by besides their depth: one number a point.
struct ReportChannel {
  std::string name;  // as it stands in the list of colours: "intensity"
  std::string unit;
  double low = 0;  // what the first and the last colour stand for; numbers outside are shown as these
  double high = 0;
  bool isDeviation = false;  // coloured by how far it is from the middle of the range
  std::vector<float> values{};
};

struct ReportTable {
  std::string title;
  std::vector<std::array<std::string, 2>> rows;
};

struct ReportPicture {
  std::string caption;
  std::vector<std::uint8_t> png;
};

struct Report {
  std::string title;
  std::string unit = "mm";
  std::span<const float> points;  // x, y, z of each point, all finite; borrowed
  std::vector<ReportChannel> channels{};
  std::vector<ReportTable> tables{};
  std::vector<ReportPicture> pictures{};
};

// The whole file. Coordinates keep 1/65535 of the cloud's extent, channels 1/255 of their range.
// Throws std::invalid_argument when a channel has not one number a point.
std::string makeReport(const Report& report);

}  // namespace fringix::tool
