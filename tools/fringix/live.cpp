#include <fmt/format.h>

#include <chrono>
#include <memory>

#include "output_file.h"
#include "png_writer.h"
#include "progress_bar.h"
#include "subcommand.h"
#include "terminal.h"

namespace fringix::tool {
namespace {

using Seconds = std::chrono::duration<double>;

struct LiveOptions {
  std::string output = "live.png";
  std::size_t count = 1;
};

Seconds timed(const auto& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - start;
}

// Fetches and writes one picture after the other; gives the time that fetching alone took.
Seconds fetchAll(const Device& device, const LiveOptions& options, Image& image) {
  ProgressBar bar(stderr, options.count > 1 && isTerminal(stderr), options.count);
  Seconds fetching{};
  for (std::size_t i = 1; i <= options.count; ++i) {
    fetching += timed([&] { device.liveImage(image); });
    writeFile(numberedPath(options.output, i, options.count), encodePngGray8(image.width, image.height, image.pixels));
    bar.advance();
  }
  return fetching;
}

void report(const LiveOptions& options, const Image& image, Seconds fetching, Seconds total) {
  if (options.count == 1) {
    fmt::print("{}: {} x {} pixels, fetched in {:.1f} ms\n", options.output, image.width, image.height, fetching.count() * 1000);
    return;
  }
  const auto rate = [&](Seconds time) { return static_cast<double>(options.count) / time.count(); };
  fmt::print("{} to {}: {} x {} pixels\n", numberedPath(options.output, 1, options.count),
             numberedPath(options.output, options.count, options.count), image.width, image.height);
  fmt::print("{} pictures, {:.1f} frames/s fetched, {:.1f} frames/s with writing the files\n", options.count, rate(fetching), rate(total));
}

void fetchLive(const LiveOptions& options, const Context& context) {
  requireWritable(numberedPath(options.output, 1, options.count));
  const Device device = openHead(context);
  Image image;
  Seconds fetching{};
  const Seconds total = timed([&] { fetching = fetchAll(device, options, image); });
  report(options, image, fetching, total);
}

}  // namespace

void defineLive(CLI::App& app, const Context& context) {
  const auto options = std::make_shared<LiveOptions>();
  app.add_option("-o,--output", options->output, "PNG file to write, live.png unless told otherwise")->type_name("FILE");
  app.add_option("-n,--count", options->count, "How many pictures to fetch, 1 to 999999; several files are numbered: live-01.png ...")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, std::size_t{999999}).description(""));
  app.callback([options, &context] { fetchLive(*options, context); });
}

}  // namespace fringix::tool
