#include <memory>
#include <vector>

#include "png/png_reader.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct ShowOptions {
  std::string image;
  std::vector<std::uint32_t> stored;  // sequence and image
};

RgbImage uniformImage(Size size, std::uint8_t shade) {
  return {size.width, size.height, std::vector<std::uint8_t>(std::size_t{3} * size.width * size.height, shade)};
}

RgbImage readImage(const std::string& file) {
  png::Raster rgb = png::toRgb(png::readPng(file));
  return {rgb.width, rgb.height, std::move(rgb.samples)};
}

void showImage(const std::string& image, Context& context) {
  constexpr std::uint8_t dark = 0;
  constexpr std::uint8_t bright = 255;
  if (image == "black" || image == "white") {
    const Device head = openHead(context);
    return head.show(uniformImage(head.projectorSize(), image == "black" ? dark : bright));
  }
  const RgbImage read = readImage(image);  // a file that cannot be read is told before the head is asked
  openHead(context).show(read);
}

void show(const ShowOptions& options, Context& context) {
  if (options.stored.empty() == options.image.empty()) throw arguments::UsageError("IMAGE", "give either an image or --sequence");
  options.stored.empty() ? showImage(options.image, context)
                         : openHead(context).showFromSequence(options.stored.front(), options.stored.back());
}

}  // namespace

void defineShow(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<ShowOptions>();
  addAddress(command, context);
  command.positional("IMAGE", &options->image, R"(PNG file, no larger than the projector; or "black", or "white")");
  command.option("--sequence", &options->stored, "Show an image of a sequence on the head: the sequence's number, the image's number")
      .valueCount(2)
      .valueName("N N");
  command.run([options, &context] { show(*options, context); });
}

}  // namespace fringix::tool
