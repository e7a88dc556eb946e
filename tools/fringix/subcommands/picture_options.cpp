#include "subcommands/picture_options.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <string_view>
#include <system_error>

namespace fringix::tool {
namespace {

bool readNumbers(std::string_view text, std::array<std::uint32_t, 4>& numbers) {
  const char* next = text.data();
  const char* const end = next + text.size();
  for (std::uint32_t& number : numbers) {
    const bool first = &number == &numbers.front();
    if (!first && (next == end || *next++ != ',')) return false;
    const auto [behind, error] = std::from_chars(next, end, number);
    if (error != std::errc()) return false;
    next = behind;
  }
  return next == end;
}

// The library takes a region without pixels for a request that is done at once.
Region parseRegion(const std::string& text) {
  std::array<std::uint32_t, 4> numbers{};
  if (!readNumbers(text, numbers) || numbers[2] == 0 || numbers[3] == 0)
    throw arguments::UsageError(fmt::format("\"{}\" is no region: give X,Y,WIDTH,HEIGHT in pixels, such as 0,0,640,480", text));
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace

void addPictureOptions(arguments::Command& command, PictureOptions& options) {
  command.option("-o,--output", &options.output, fmt::format("PNG file to write, {} unless told otherwise", options.output))
      .valueName("FILE");
  command.option("--channel", &options.channel, "Camera channel, 0 unless told otherwise").valueName("N");
  command
      .option(
          "--roi", [&options](const std::string& text) { options.region = parseRegion(text); }, "Only this part of the picture")
      .valueName("X,Y,W,H");
}

}  // namespace fringix::tool
