#include "subcommands/picture_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "console/terminal.h"
#include "files/files.h"

namespace fringix::tool {
namespace {

bool readNumbers(std::string_view text, std::array<std::uint32_t, 4>& numbers) {
  const char* next = text.data();
  const char* const end = next + text.size();
  for (std::uint32_t& number : numbers) {
    const std::ptrdiff_t place = &number - numbers.data();
    if (place > 0 && (next == end || (*next != ',' && !(*next == 'x' && place == 3)))) return false;
    if (place > 0) ++next;
    const auto [behind, error] = std::from_chars(next, end, number);
    if (error != std::errc()) return false;
    next = behind;
  }
  return next == end;
}

bool isPngName(std::string path) {
  constexpr std::string_view extension = ".png";
  std::transform(path.begin(), path.end(), path.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return path.ends_with(extension);
}

std::string complaintAboutOutput(const std::string& output, std::size_t count) {
  if (output != files::standardOutput)
    return isPngName(output) ? "" : fmt::format("\"{}\" is no name of a PNG file: let it end in .png", output);
  if (count > 1) return fmt::format("{} pictures are too many for standard output: name a file, or fetch one", count);
  return isTerminal(stdout) ? "a terminal cannot show a PNG file: lead standard output to a file or a program" : "";
}

}  // namespace

// The library takes a region without pixels for a request that is done at once.
Region parseRegion(const std::string& text) {
  std::array<std::uint32_t, 4> numbers{};
  if (!readNumbers(text, numbers) || numbers[2] == 0 || numbers[3] == 0)
    throw arguments::UsageError(fmt::format("\"{}\" is no region: give X,Y,WIDTHxHEIGHT in pixels, such as 0,0,640x480", text));
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

void requirePictureOutput(const std::string& output, std::size_t count) {
  if (const std::string complaint = complaintAboutOutput(output, count); !complaint.empty())
    throw arguments::UsageError("--output", complaint);
}

void addPictureOptions(arguments::Command& command, PictureOptions& options) {
  command
      .option("-o,--output", &options.output,
              fmt::format("PNG file to write, - is standard output, {} unless told otherwise", options.output))
      .valueName("FILE");
  command.option("--channel", &options.channel, "Camera channel, 0 unless told otherwise").valueName("N");
  command
      .option(
          "--roi", [&options](const std::string& text) { options.region = parseRegion(text); }, "Only this part of the picture, in pixels")
      .valueName("X,Y,WxH");
}

}  // namespace fringix::tool
