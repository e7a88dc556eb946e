#include <fmt/format.h>

#include <memory>
#include <optional>

#include "png/png_reader.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct MaskOptions {
  std::string mask;
  std::int32_t selector = 0;
};

Image readMask(const std::string& file) {
  std::optional<png::Raster> raster = png::toGray(png::readPng(file));
  if (!raster) throw std::runtime_error(fmt::format("\"{}\" has colours: save the mask as a gray picture", file));
  Image mask;
  mask.width = raster->width;
  mask.height = raster->height;
  mask.pixels = std::move(raster->samples);
  return mask;
}

void setMask(const MaskOptions& options, Context& context) {
  const Image mask = readMask(options.mask);
  openHead(context).setMask(mask, options.selector);
}

}  // namespace

void defineMask(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<MaskOptions>();
  addAddress(command, context);
  command.positional("MASK", &options->mask, "PNG file without colours; \"clear\" removes the mask").required();
  command.option("--selector", &options->selector, "Which mask, as the head counts them, 0 unless told otherwise").valueName("N");
  command.run([options, &context] { options->mask == "clear" ? openHead(context).clearMask() : setMask(*options, context); });
}

}  // namespace fringix::tool
