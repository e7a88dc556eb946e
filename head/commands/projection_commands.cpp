// Images on the projector, and measurements: each image of a sequence shown, seen by every camera, and the pictures kept.
#include <chrono>
#include <memory>
#include <utility>

#include "head/commands/commands.h"
#include "head/commands/received_image.h"

namespace fringix::head {

namespace {

void showUpload(Call& call, PixelFormat format) {
  const auto [width, height, stride] = call.wire.readInts<3>();
  auto image = readImage(call, {width, height, stride}, format);
  if (image.pattern) call.model.show(std::make_shared<const Pattern>(std::move(*image.pattern)));
  call.reply(image.status);
}

// The single reply of a measurement is its result. Other clients are served between its images. What the head computes for an image is
// part of the image's time, as the transfer from a camera is while the next image is exposed.
void measure(Call& call, std::uint32_t id, std::uint32_t first, std::uint32_t last) {
  if (const std::int32_t fault = call.model.measurementFault(); fault != 0) return call.wire.writeInt(fault);
  Status status = call.model.sequenceImage(id, last).status;
  if (status == Status::ok && first > last) status = Status::badParameter;
  for (std::uint32_t image = first; image <= last && status == Status::ok; ++image) {
    const auto end = std::chrono::steady_clock::now() + call.model.settings().imageTime;
    status = call.model.measureImage(id, image);
    call.wire.pauseUntil(end);
  }
  call.reply(status);
}

constexpr Command commands[] = {
    {"00MSG_SLShowImage24", 0, [](Call& call) { showUpload(call, PixelFormat::rgb24); }},
    {"01MSG_SLShowImage8", 0, [](Call& call) { showUpload(call, PixelFormat::grey8); }},
    {"02MSG_SLShowFromSeq", 0,
     [](Call& call) {
       const auto [id, image] = call.wire.readInts<2>();
       call.reply(call.model.showFromSequence(id, image));
     }},
    {"60MSG_SLStartMeasurement", 0,
     [](Call& call) {
       const auto [id] = call.wire.readInts<1>();
       measure(call, id, 0, call.model.imageCount(id) - 1);
     }},
    {"61MSG_SLStartFromTo", 0,
     [](Call& call) {
       const auto [id, first, last] = call.wire.readInts<3>();
       measure(call, id, first, last);
     }},
};

}  // namespace

CommandFamily projectionCommands() { return commands; }

}  // namespace fringix::head
