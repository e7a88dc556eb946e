#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "console/explain.h"
#include "console/json.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "png/png_reader.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct PatternOptions {
  std::uint32_t imageCount = 0;
  std::uint32_t sequence = 0;
  std::uint32_t index = 0;
  std::vector<std::uint32_t> parameters;  // g1 to g4
  std::vector<std::string> files;
};

void addSequence(arguments::Command& command, PatternOptions& options) {
  command.positional("SEQUENCE", &options.sequence, "Number of the sequence, as \"fringix pattern alloc\" printed it").required();
}

void allocate(const PatternOptions& options, Context& context) {
  const std::uint32_t sequence = openHead(context).allocateSequence(options.imageCount);
  fmt::print("{}\n", context.json ? Json::object({{"sequence", sequence}}).indented() : std::to_string(sequence));
}

void defineAllocate(arguments::Command& command, const std::shared_ptr<PatternOptions>& options, Context& context) {
  addAddress(command, context);
  command.positional("COUNT", &options->imageCount, "How many images the sequence holds").required();
  command.run([options, &context] { allocate(*options, context); });
}

void defineFree(arguments::Command& command, const std::shared_ptr<PatternOptions>& options, Context& context) {
  addAddress(command, context);
  addSequence(command, *options);
  command.run([options, &context] { openHead(context).freeSequence(options->sequence); });
}

void requireProjectorSize(const png::Raster& raster, const std::string& file, Size projector) {
  if (raster.width == projector.width && raster.height == projector.height) return;
  throw std::runtime_error(fmt::format("\"{}\" has {} x {} pixels, but the projector has {} x {}", file, raster.width, raster.height,
                                       projector.width, projector.height));
}

// Which images the head has by now is what matters to somebody who goes on.
[[noreturn]] void failUpload(const Error& error, const PatternOptions& options, std::size_t arrived, const std::string& address) {
  Explanation explanation = explain(error, address);
  explanation.what += fmt::format(": {} of {} images had arrived", arrived, options.files.size());
  if (arrived > 0)
    explanation.next +=
        fmt::format(" \"--first {}\" with \"{}\" and what follows it goes on there.", options.index + arrived, options.files[arrived]);
  throw Failure(std::move(explanation));
}

void upload(const PatternOptions& options, Context& context) {
  std::vector<png::Raster> rasters;
  for (const std::string& file : options.files) rasters.push_back(png::readPng(file));
  const Device device = openHead(context);
  for (std::size_t i = 0; i < rasters.size(); ++i) requireProjectorSize(rasters[i], options.files[i], device.projectorSize());
  ProgressBar bar(stderr, rasters.size() > 1 && isTerminal(stderr), rasters.size());
  for (std::size_t i = 0; i < rasters.size(); ++i) {
    png::Raster rgb = png::toRgb(std::move(rasters[i]));
    const RgbImage image{rgb.width, rgb.height, std::move(rgb.samples)};
    try {
      device.putImage(options.sequence, static_cast<std::uint8_t>(options.index + i), image);
    } catch (const Error& error) {
      failUpload(error, options, i, context.address);
    }
    bar.advance();
  }
}

void defineUpload(arguments::Command& command, const std::shared_ptr<PatternOptions>& options, Context& context) {
  addAddress(command, context);
  addSequence(command, *options);
  command.positional("FILE", &options->files, "PNG files of the projector's size").required();
  command.option("--first", &options->index, "Place of the first file in the sequence, 0 unless told otherwise; the others follow it")
      .valueName("N")
      .range(0, 255);
  command.run([options, &context] {
    if (options->index + options->files.size() > 256) throw arguments::UsageError("--first", "the last place would be above 255");
    upload(*options, context);
  });
}

using Generate = void (Device::*)(std::uint32_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t) const;

template <Generate generate>
void defineGenerate(arguments::Command& command, const std::shared_ptr<PatternOptions>& options, Context& context) {
  addAddress(command, context);
  addSequence(command, *options);
  command.positional("G", &options->parameters, "Four numbers of 0 to 255; what they mean is the head's business")
      .required()
      .valueCount(4)
      .range(0, 255);
  command.run([options, &context] {
    std::uint8_t g[4] = {};
    std::transform(options->parameters.begin(), options->parameters.end(), g, [](std::uint32_t n) { return static_cast<std::uint8_t>(n); });
    (openHead(context).*generate)(options->sequence, g[0], g[1], g[2], g[3]);
  });
}

enum class Direction { line, column };

void makeFromFile(Direction direction, const PatternOptions& options, Context& context) {
  const png::Raster raster = png::readPng(options.files.front());
  const bool line = direction == Direction::line;
  if ((line ? raster.height : raster.width) != 1) {
    throw std::runtime_error(fmt::format("\"{}\" has {} x {} pixels, but a {} is 1 pixel {}", options.files.front(), raster.width,
                                         raster.height, line ? "line" : "column", line ? "high" : "wide"));
  }
  const auto make8 = line ? &Device::makeFromLine8 : &Device::makeFromColumn8;
  const auto make24 = line ? &Device::makeFromLine24 : &Device::makeFromColumn24;
  (openHead(context).*(raster.samplesPerPixel == 1 ? make8 : make24))(options.sequence, static_cast<std::uint8_t>(options.index),
                                                                      raster.samples);
}

template <Direction direction>
void defineFromFile(arguments::Command& command, const std::shared_ptr<PatternOptions>& options, Context& context) {
  addAddress(command, context);
  addSequence(command, *options);
  command.positional("INDEX", &options->index, "Place in the sequence, 0 to 255").required().range(0, 255);
  command.positional("FILE", &options->files, "PNG file: gray gives an 8-bit pattern, RGB a 24-bit one").required().valueCount(1);
  command.run([options, &context] { makeFromFile(direction, *options, context); });
}

struct PatternCommand {
  const char* name;
  const char* summary;
  const char* note;  // null: none
  void (*define)(arguments::Command& command, const std::shared_ptr<PatternOptions>& options, Context& context);
};

constexpr const char* grayNote =
    "To the simulated head G means: place in the sequence; bit, 0 is the finest;\n"
    "0 to number the columns, 1 the rows; 0, or 1 for inverted.";
constexpr const char* phaseNote =
    "To the simulated head G means: place of the first image; number of steps, each fills\n"
    "one image; period in pixels, 0 is the whole projector; 0 along the columns, 1 the rows.";
constexpr const char* imageNote =
    "To the simulated head G means: place in the sequence; kind (0 uniform, 1 checkerboard,\n"
    "2 ramp from left to right, 3 ramp from top to bottom); brightest level; side of a square\n"
    "in pixels, 0 is 32.";

constexpr PatternCommand patternCommands[] = {
    {"alloc", "Allocate a sequence and print its number", nullptr, defineAllocate},
    {"free", "Free a sequence", nullptr, defineFree},
    {"upload", "Upload PNG pictures as images of a sequence", nullptr, defineUpload},
    {"gray", "Let the head make a Gray code pattern", grayNote, defineGenerate<&Device::makeGrayCode>},
    {"phase", "Let the head make phase-shift patterns", phaseNote, defineGenerate<&Device::makePhase>},
    {"image", "Let the head make an image pattern", imageNote, defineGenerate<&Device::makeImage>},
    {"line", "Make a pattern from one line of pixels", nullptr, defineFromFile<Direction::line>},
    {"column", "Make a pattern from one column of pixels", nullptr, defineFromFile<Direction::column>},
};

}  // namespace

void definePattern(arguments::Command& command, Context& context) {
  for (const PatternCommand& row : patternCommands) {
    arguments::Command& child = command.subcommand(row.name, row.summary);
    if (row.note != nullptr) child.note(row.note);
    row.define(child, std::make_shared<PatternOptions>(), context);
  }
}

}  // namespace fringix::tool
