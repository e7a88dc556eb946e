// Live and stored pictures. The reply is the picture and nothing else, so a missing one is told by its first two bytes.
#include <algorithm>

#include "head/commands/commands.h"
#include "head/commands/transfers.h"
#include "head/optics/picture.h"
#include "head/optics/regions.h"

namespace fringix::head {

namespace {

constexpr std::uint8_t missingPicture[] = {0x00, 0xFF};

Region wholePicture(const Call& call) {
  const Size camera = call.model.settings().camera;
  return {0, 0, static_cast<std::uint32_t>(camera.width), static_cast<std::uint32_t>(camera.height)};
}

// The marker, in as many bytes as the client waits for. No client waits for more than a whole picture.
void sendMissing(Call& call, std::uint64_t count) {
  const Region whole = wholePicture(call);
  if (count > std::uint64_t{whole.width} * whole.height)
    throw ProtocolError("a picture of " + std::to_string(count) + " bytes, more than the camera has");
  const auto marked = std::min<std::uint64_t>(count, std::size(missingPicture));
  call.wire.writeBytes(missingPicture, static_cast<std::size_t>(marked));
  call.wire.writeRepeated(0, count - marked);
}

bool isWhole(const Region& region, Size size) {
  return region.width == static_cast<std::uint32_t>(size.width) && region.height == static_cast<std::uint32_t>(size.height);
}

// Sends the region of a picture, reduced by `factor`; null is a picture that does not exist.
void sendPart(Call& call, const Picture* picture, const Region& region, std::uint32_t factor = 1) {
  if (factor == 0) throw ProtocolError("a picture reduced by the factor 0");
  const std::uint64_t count = std::uint64_t{region.width / factor} * region.height / factor;
  if (count == 0) return;
  const bool divides = region.width % factor == 0 && region.height % factor == 0;
  if (picture == nullptr || !divides || !liesWithin(region, picture->size)) return sendMissing(call, count);
  const bool asItIs = factor == 1 && isWhole(region, picture->size);
  Picture part;
  if (factor > 1) reduce(*picture, region, factor, part);
  if (factor == 1 && !asItIs) crop(*picture, region, part);
  const Picture& reply = asItIs ? *picture : part;
  call.wire.writeBytes(reply.pixels.data(), reply.pixels.size());
}

void sendLive(Call& call, std::uint32_t channel, const Region& region, std::uint32_t factor = 1) {
  const auto room = takeRoom(call, 2 * call.model.settings().camera.pixels());  // for the picture and its part
  Picture picture;
  const bool taken = room && call.model.takePicture(channel, picture);
  sendPart(call, taken ? &picture : nullptr, region, factor);
}

void sendStored(Call& call, PictureName name, const Region& region) {
  const Size camera = call.model.settings().camera;
  const auto room = takeRoom(call, isWhole(region, camera) ? 0 : camera.pixels());
  sendPart(call, room ? call.model.storedPicture(name).get() : nullptr, region);
}

constexpr Command commands[] = {
    {"41MSG_SLGetLiveImage", 0, [](Call& call) { sendLive(call, 0, wholePicture(call)); }},
    {"42MSG_SLGetLiveImageROI", 0,
     [](Call& call) {
       const auto [x, y, width, height] = call.wire.readInts<4>();
       sendLive(call, 0, {x, y, width, height});
     }},
    {"43MSG_SLGetImageIndex", 0,
     [](Call& call) {
       const auto [index] = call.wire.readInts<1>();
       sendStored(call, {0, index}, wholePicture(call));
     }},
    {"44MSG_SLGetImageIndexROI", 0,
     [](Call& call) {
       const auto [x, y, width, height, index] = call.wire.readInts<5>();
       sendStored(call, {0, index}, {x, y, width, height});
     }},
    {"220MSG_SLGetLiveImageEx", 2600,
     [](Call& call) {
       const auto [channel] = call.wire.readInts<1>();
       sendLive(call, channel, wholePicture(call));
     }},
    {"221MSG_SLGetLiveImageROIEx", 2600,
     [](Call& call) {
       const auto [x, y, width, height, channel] = call.wire.readInts<5>();
       sendLive(call, channel, {x, y, width, height});
     }},
    {"222MSG_SLGetImageIndexEx", 2600,
     [](Call& call) {
       const auto [index, channel] = call.wire.readInts<2>();
       sendStored(call, {channel, index}, wholePicture(call));
     }},
    {"223MSG_SLGetImageIndexROIEx", 2600,
     [](Call& call) {
       const auto [x, y, width, height, index, channel] = call.wire.readInts<6>();
       sendStored(call, {channel, index}, {x, y, width, height});
     }},
    {"225MSG_SLGetLiveImageLowRes", 2600,
     [](Call& call) {
       const auto [factor, channel] = call.wire.readInts<2>();
       sendLive(call, channel, wholePicture(call), factor);
     }},
    {"226MSG_SLGetLiveImageROILowRes", 2600,
     [](Call& call) {
       const auto [x, y, width, height, channel, factor] = call.wire.readInts<6>();
       sendLive(call, channel, {x, y, width, height}, factor);
     }},
};

}  // namespace

CommandFamily pictureCommands() { return commands; }

}  // namespace fringix::head
