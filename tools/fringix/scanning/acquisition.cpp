#include "scanning/acquisition.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "console/explain.h"
#include "files/files.h"
#include "png/png_reader.h"

namespace fringix::tool {
namespace {

class Sequence {
 public:
  Sequence(const Device& head, std::uint32_t images) : head_(head), id_(head.allocateSequence(images)) {}
  ~Sequence() {
    try {
      head_.freeSequence(id_);
    } catch (const Error&) {  // the connection is lost, and with it the wish
    }
  }
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;

  std::uint32_t id() const { return id_; }

 private:
  const Device& head_;
  std::uint32_t id_;
};

std::size_t countOf(const SLScanPlan& plan) { return static_cast<std::size_t>(scan::pictureCount(plan)); }

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

std::size_t partsFromHead(const SLScanPlan& plan) { return 2 * countOf(plan) + 1; }

std::size_t partsFromFolder(const SLScanPlan& plan) { return countOf(plan); }

void acquire(const Device& head, const SLScanPlan& plan, std::uint32_t channel, Steps& steps, const PictureSink& sink) {
  const std::size_t count = countOf(plan);
  steps.begin("upload");
  const Sequence sequence(head, static_cast<std::uint32_t>(count));
  for (std::size_t i = 0; i < count; ++i, steps.advance()) {
    head.makeFromLine8(sequence.id(), static_cast<std::uint8_t>(i), scan::line(plan, static_cast<std::int32_t>(i)));
  }
  steps.begin("measure");
  head.measure(sequence.id());
  steps.advance();
  steps.begin("fetch");
  for (std::size_t i = 0; i < count; ++i, steps.advance()) sink(head.storedImage(static_cast<std::uint8_t>(i), channel));
}

void readRaw(const std::string& folder, const SLScanPlan& plan, Steps& steps, const PictureSink& sink) {
  steps.begin("read");
  for (std::size_t i = 0; i < countOf(plan); ++i, steps.advance()) sink(readPicture(rawPath(folder, plan, i), i, countOf(plan)));
}

std::string rawPath(const std::string& folder, const SLScanPlan& plan, std::size_t index) {
  return files::inFolder(folder, files::numberedPath("raw.png", index, std::max<std::size_t>(countOf(plan) - 1, 10)));
}

}  // namespace fringix::tool
