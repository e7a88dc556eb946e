#include "subcommands/picture_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace fringix::tool {
namespace {

constexpr const char* noRegion = "is no region: give X,Y,WIDTH,HEIGHT in pixels, such as 0,0,640,480";

// The library takes a region without pixels for a request that is done at once.
Region parseRegion(const std::string& text) {
  std::vector<std::uint32_t> numbers;
  for (const std::string& part : CLI::detail::split(text, ',')) {
    std::uint32_t number = 0;
    if (!CLI::detail::lexical_cast(part, number)) break;
    numbers.push_back(number);
  }
  const bool readable = numbers.size() == 4 && std::count(text.begin(), text.end(), ',') == 3;
  if (!readable || numbers[2] == 0 || numbers[3] == 0) throw CLI::ValidationError("--roi", fmt::format("\"{}\" {}", text, noRegion));
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace

void addPictureOptions(CLI::App& app, PictureOptions& options) {
  app.add_option("-o,--output", options.output, fmt::format("PNG file to write, {} unless told otherwise", options.output))
      ->type_name("FILE");
  app.add_option("--channel", options.channel, "Camera channel, 0 unless told otherwise")->type_name("N");
  app.add_option_function<std::string>(
         "--roi", [&options](const std::string& text) { options.region = parseRegion(text); }, "Only this part of the picture")
      ->type_name("X,Y,W,H");
}

}  // namespace fringix::tool
