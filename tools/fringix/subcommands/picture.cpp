#include <memory>

#include "files/files.h"
#include "subcommands/picture_options.h"
#include "subcommands/picture_series.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

constexpr std::size_t largestIndex = 255;

struct StoredOptions {
  PictureOptions picture{"picture.png", 0, {}};
  std::size_t index = 0;
  std::size_t count = 1;
};

Image fetchStored(const Device& device, const StoredOptions& options, std::size_t place) {
  const auto index = static_cast<std::uint8_t>(options.index + place);
  const std::optional<Region>& region = options.picture.region;
  return region ? device.storedRegion(index, *region, options.picture.channel) : device.storedImage(index, options.picture.channel);
}

void fetchStoredPictures(const StoredOptions& options, Context& context) {
  const std::size_t last = options.index + options.count - 1;
  if (last > largestIndex)
    throw arguments::UsageError("--count", "the last stored picture would be number " + std::to_string(last) + ", above 255");
  requirePictureOutput(options.picture.output, options.count);
  const auto path = [&](std::size_t i) {
    return options.count == 1 ? options.picture.output : files::numberedPath(options.picture.output, options.index + i, last);
  };
  fetchSeries(
      {options.count, options.picture.channel, path, [&](const Device& device, std::size_t i) { return fetchStored(device, options, i); }},
      context);
}

}  // namespace

void definePicture(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<StoredOptions>();
  addAddress(command, context);
  command.positional("INDEX", &options->index, "Number of the picture on the head, 0 to 255").required().range(0, largestIndex);
  addPictureOptions(command, options->picture);
  command.option("-n,--count", &options->count, "How many pictures to fetch; several files bear their picture's number: picture-07.png ...")
      .valueName("N")
      .range(1, largestIndex + 1);
  command.run([options, &context] { fetchStoredPictures(*options, context); });
}

}  // namespace fringix::tool
