// Writes a report of a cloud whose points are known: a slope of 300 x 200 points, and two landmarks before it that are 100 mm apart.
#include <cstdio>
#include <fstream>
#include <vector>

#include "report/report.h"

int main(int argc, char** argv) {
  using namespace fringix::tool;
  if (argc != 2) return std::fputs("usage: fringix-sample-report FILE\n", stderr), 2;
  std::vector<float> points{-60, 20, 450, 40, 20, 450};
  for (int row = 0; row < 200; ++row) {
    for (int column = 0; column < 300; ++column) {
      const auto x = static_cast<float>(column - 150);
      points.insert(points.end(), {x, static_cast<float>(row - 100), 520 + 0.2F * x});
    }
  }
  const std::size_t count = points.size() / 3;
  Report report{.title = "Sample <b>&</b>", .points = points};
  std::vector<float> intensity(count, 128);
  intensity[0] = intensity[1] = 255;
  report.channels.push_back({.name = "intensity </script>", .unit = "", .low = 0, .high = 255, .values = intensity});
  report.channels.push_back(
      {.name = "error", .unit = "mm", .low = -0.1, .high = 0.1, .isDeviation = true, .values = std::vector<float>(count, 0.05F)});
  report.tables.push_back({"Result", {{{"points", std::to_string(count)}}}});
  std::ofstream(argv[1], std::ios::binary) << makeReport(report);
  return 0;
}
