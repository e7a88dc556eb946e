#include "subcommands/picture_series.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>
#include <vector>

#include "console/explain.h"
#include "console/json.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "files/files.h"
#include "png/png_writer.h"

namespace fringix::tool {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

struct Outcome {
  Size size;
  Seconds fetching{};
  Seconds total{};
};

Outcome fetchAll(const PictureSeries& series, const Device& device) {
  ProgressBar bar(stderr, series.count > 1 && isTerminal(stderr), series.count);
  Outcome outcome;
  const Clock::time_point start = Clock::now();
  for (std::size_t i = 0; i < series.count; ++i) {
    const Clock::time_point asked = Clock::now();
    const Image image = series.fetch(device, i);
    outcome.fetching += Clock::now() - asked;
    outcome.size = {image.width, image.height};
    files::writeFile(series.path(i), png::encodePngGray8(image.width, image.height, image.pixels));
    bar.advance();
  }
  outcome.total = Clock::now() - start;
  return outcome;
}

void reportAsJson(const PictureSeries& series, const Outcome& outcome) {
  std::vector<Json> paths;
  for (std::size_t i = 0; i < series.count; ++i) paths.emplace_back(series.path(i));
  const Json json = Json::object({{"files", Json::array(std::move(paths))},
                                  {"width", outcome.size.width},
                                  {"height", outcome.size.height},
                                  {"fetchingSeconds", outcome.fetching.count()},
                                  {"totalSeconds", outcome.total.count()}});
  fmt::print(files::reportStream(series.path(0)), "{}\n", json.indented());
}

void report(const PictureSeries& series, const Outcome& outcome) {
  const auto [width, height] = outcome.size;
  std::FILE* stream = files::reportStream(series.path(0));
  if (series.count == 1) {
    fmt::print(stream, "{}: {} x {} pixels, fetched in {:.1f} ms\n", series.path(0), width, height, outcome.fetching.count() * 1000);
    return;
  }
  const auto rate = [&](Seconds time) { return static_cast<double>(series.count) / time.count(); };
  fmt::print(stream, "{} to {}: {} x {} pixels\n", series.path(0), series.path(series.count - 1), width, height);
  fmt::print(stream, "{} pictures, {:.1f} frames/s fetched, {:.1f} frames/s with writing the files\n", series.count, rate(outcome.fetching),
             rate(outcome.total));
}

}  // namespace

void fetchSeries(const PictureSeries& series, Context& context) {
  files::requireWritable(series.path(0));
  const Device device = openHead(context);
  requireChannel(device, series.channel, context.address);
  const Outcome outcome = fetchAll(series, device);
  context.json ? reportAsJson(series, outcome) : report(series, outcome);
}

}  // namespace fringix::tool
