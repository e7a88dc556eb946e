#include "scanning/acquisition.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "console/explain.h"
#include "files/files.h"
#include "png/png_reader.h"
#include "scanning/exposures.h"
#include "scanning/generated_patterns.h"
#include "scanning/sequence.h"

namespace fringix::tool {
namespace {

// Of all exposures and cameras.
std::size_t countOf(const ScanTask& task) { return task.picturesOfExposure() * task.exposureCount() * task.channels.size(); }

void prepare(const Device& head, const ScanTask& task, std::uint32_t sequence, Steps& steps) {
  steps.begin(task.generated ? "generate" : "upload");
  for (std::int32_t i = 0; i < scan::pictureCount(task.plan); ++i, steps.advance()) {
    if (task.generated) {
      generatePicture(head, sequence, task.plan, i);
    } else {
      head.makeFromLine8(sequence, static_cast<std::uint8_t>(i), scan::line(task.plan, i));
    }
  }
}

Image fetchPicture(const Device& head, const ScanTask& task, std::size_t index, std::uint32_t channel) {
  const auto number = static_cast<std::uint8_t>(index);
  return task.roi ? head.storedRegion(number, neededRegion(task), channel) : head.storedImage(number, channel);
}

void measure(const Device& head, const ScanTask& task, std::uint32_t sequence, Steps& steps, const PictureSink& sink) {
  steps.begin("measure");
  head.measure(sequence);
  steps.advance();
  steps.begin("fetch");
  for (std::size_t i = 0; i < task.picturesOfExposure(); ++i) {
    for (std::size_t camera = 0; camera < task.channels.size(); ++camera, steps.advance())
      sink(camera, fetchPicture(head, task, i, task.channels[camera]));
  }
}

Image cut(const Image& picture, const Region& part) {
  Image inner({part.width, part.height});
  for (std::uint32_t row = 0; row < part.height; ++row) {
    const auto first = picture.pixels.begin() + static_cast<std::ptrdiff_t>((std::size_t{part.y} + row) * picture.width + part.x);
    std::copy_n(first, part.width, inner.pixels.begin() + static_cast<std::ptrdiff_t>(std::size_t{row} * part.width));
  }
  return inner;
}

Image readPicture(const std::string& path, std::size_t index, std::size_t count) {
  if (!files::exists(path)) {
    throw Failure({fmt::format("\"{}\" is missing: picture {} of the scan's {}", path, index + 1, count),
                   "Scan again with --raw, or put the picture back: a scan needs all of its pictures."});
  }
  std::optional<png::Raster> gray = png::toGray(png::readPng(path));
  if (!gray) throw Failure({fmt::format("\"{}\" is a picture in colours", path), "Pictures of a scan are gray."});
  Image image;
  image.width = gray->width;
  image.height = gray->height;
  image.pixels = std::move(gray->samples);
  return image;
}

}  // namespace

std::size_t partsFromHead(const ScanTask& task) { return task.picturesOfExposure() + task.exposureCount() + countOf(task); }

std::size_t partsFromFolder(const ScanTask& task) { return countOf(task); }

void acquire(const Device& head, const ScanTask& task, Steps& steps, const PictureSink& sink) {
  const Sequence sequence(head, static_cast<std::uint32_t>(task.picturesOfExposure()));
  prepare(head, task, sequence.id(), steps);
  if (task.exposures.empty()) return measure(head, task, sequence.id(), steps, sink);
  const ChangedExposure exposure(head);
  for (const std::int32_t microseconds : task.exposures) {
    exposure.set(microseconds);
    measure(head, task, sequence.id(), steps, sink);
  }
}

void readRaw(const std::string& folder, const ScanTask& task, Steps& steps, const PictureSink& sink) {
  steps.begin("read");
  const Region needed = neededRegion(task);
  for (std::size_t i = 0; i < countOf(task); ++i, steps.advance()) {
    Image picture = readPicture(rawPath(folder, task, i), i, countOf(task));
    const bool whole = isSame(Size{picture.width, picture.height}, cameraSizeOf(task));
    sink(i % task.channels.size(), task.roi && whole ? cut(picture, needed) : std::move(picture));
  }
}

std::string rawPath(const std::string& folder, const ScanTask& task, std::size_t index) {
  return files::inFolder(folder, files::numberedPath("raw.png", index, std::max<std::size_t>(countOf(task) - 1, 10)));
}

}  // namespace fringix::tool
