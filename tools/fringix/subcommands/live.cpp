#include <memory>

#include "files/files.h"
#include "subcommands/picture_options.h"
#include "subcommands/picture_series.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct LiveOptions {
  PictureOptions picture{"live.png", 0, {}};
  std::size_t count = 1;
  std::uint32_t factor = 1;
};

Image fetchLive(const Device& device, const LiveOptions& options) {
  const std::uint32_t channel = options.picture.channel;
  if (const auto& region = options.picture.region) {
    return options.factor == 1 ? device.liveRegion(*region, channel)
                               : device.liveRegionLowRes(*region, static_cast<std::int32_t>(options.factor), channel);
  }
  return options.factor == 1 ? device.liveImage(channel) : device.liveLowRes(options.factor, channel);
}

void fetchLivePictures(const LiveOptions& options, Context& context) {
  requirePictureOutput(options.picture.output, options.count);
  const auto path = [&](std::size_t i) {
    return options.count == 1 ? options.picture.output : files::numberedPath(options.picture.output, i + 1, options.count);
  };
  fetchSeries({options.count, options.picture.channel, path, [&](const Device& device, std::size_t) { return fetchLive(device, options); }},
              context);
}

}  // namespace

void defineLive(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<LiveOptions>();
  addAddress(command, context);
  addPictureOptions(command, options->picture);
  command.option("-n,--count", &options->count, "How many pictures to fetch, 1 to 999999; several files are numbered: live-01.png ...")
      .valueName("N")
      .range(1, 999999);
  command.option("--factor", &options->factor, "Reduce the picture by this factor, which divides its width and height")
      .valueName("N")
      .range(1, 65536);
  command.run([options, &context] { fetchLivePictures(*options, context); });
}

}  // namespace fringix::tool
