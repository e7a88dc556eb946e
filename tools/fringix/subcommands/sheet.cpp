#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <vector>

#include "console/json.h"
#include "files/files.h"
#include "pictures/contact_sheet.h"
#include "png/png_reader.h"
#include "png/png_writer.h"
#include "subcommands/picture_options.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct SheetOptions {
  std::string output = "sheet.png";
  std::vector<std::string> files;
  std::vector<std::string> labels;
  SheetLayout layout;
};

// Else a name that was left out, or a pattern such as *.png, would cost a picture.
void requireNoInput(const SheetOptions& options) {
  for (const std::string& file : options.files) {
    if (files::isSameFile(file, options.output))
      throw std::runtime_error(fmt::format("\"{}\" is a picture for the sheet: name another file with -o", options.output));
  }
}

void makeSheet(const SheetOptions& options, const Context& context) {
  if (!options.labels.empty() && options.labels.size() != options.files.size()) {
    throw arguments::UsageError("--label", fmt::format("{} labels for {} files", options.labels.size(), options.files.size()));
  }
  requirePictureOutput(options.output, 1);
  requireNoInput(options);
  files::requireWritable(options.output);
  std::vector<LabelledPicture> pictures;
  for (std::size_t i = 0; i < options.files.size(); ++i) {
    const std::string name = std::filesystem::path(options.files[i]).stem().string();
    pictures.push_back({options.labels.empty() ? name : options.labels[i], png::readPng(options.files[i])});
  }
  const png::Raster sheet = makeContactSheet(pictures, options.layout);
  files::writeFile(options.output, png::encodePngRgb24(sheet.width, sheet.height, sheet.samples));
  if (context.json) {
    const Json json =
        Json::object({{"file", options.output}, {"pictures", pictures.size()}, {"width", sheet.width}, {"height", sheet.height}});
    return fmt::print(files::reportStream(options.output), "{}\n", json.indented());
  }
  fmt::print(files::reportStream(options.output), "{}: {} pictures on {} x {} pixels\n", options.output, pictures.size(), sheet.width,
             sheet.height);
}

}  // namespace

void defineSheet(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<SheetOptions>();
  command.positional("FILE", &options->files, "PNG files").required();
  command.option("-o,--output", &options->output, "PNG file to write, - is standard output, sheet.png unless told otherwise")
      .valueName("FILE");
  command.option("-l,--label", &options->labels, "Label of a picture, given once for each file in the same order; else the file's name")
      .valueName("TEXT")
      .oneAtATime();
  command.option("--columns", &options->layout.columns, "Pictures side by side; as many as make a square unless told otherwise")
      .valueName("N")
      .range(1, 1000);
  command.option("--width", &options->layout.pictureWidth, "Width that larger pictures are reduced to, 320 unless told otherwise")
      .valueName("N")
      .range(1, 10000);
  addJson(command, context);
  command.run([options, &context] { makeSheet(*options, context); });
}

}  // namespace fringix::tool
