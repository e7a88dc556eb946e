#include "comparisons.h"

#include <fringix/fringix.h>

#include <cstring>

namespace fringix::bench {

namespace {

constexpr Head thumbnail{16, 16};
constexpr Head megapixel{1280, 1024};
constexpr Head twelveMegapixels{4096, 3000};

const std::vector<Quantity> smallCommand = {{Metric::medianLatency, 1.10}, {Metric::callRate, std::nullopt}};
const std::vector<Quantity> transfer = {
    {Metric::processorPerGigabyte, 1.05}, {Metric::throughput, 0.90}, {Metric::callRate, std::nullopt}, {Metric::serverLoad, std::nullopt}};

std::int32_t livePicture(std::int32_t handle, const Head& head, std::uint8_t* buffer) {
  return SLGetLiveImage(handle, buffer, head.width, head.height);
}

void livePictureByHand(MinimalClient& client, const Head& head, std::uint8_t* buffer) {
  client.command("41MSG_SLGetLiveImage");
  client.receive(buffer, head.pixels());
}

// A caller's buffer smaller than the camera's picture: the whole picture still crosses the network.
constexpr std::uint32_t croppedWidth = 1024;
constexpr std::uint32_t croppedHeight = 768;

std::int32_t croppedPicture(std::int32_t handle, const Head&, std::uint8_t* buffer) {
  return SLGetLiveImage(handle, buffer, croppedWidth, croppedHeight);
}

void croppedPictureByHand(MinimalClient& client, const Head& head, std::uint8_t* buffer) {
  std::uint8_t* frame = client.scratchFrame(head.pixels());
  livePictureByHand(client, head, frame);
  for (std::size_t row = 0; row < croppedHeight; ++row) std::memcpy(buffer + row * croppedWidth, frame + row * head.width, croppedWidth);
}

}  // namespace

const std::vector<Comparison>& comparisons() {
  static const std::vector<Comparison> table = {
      {"live picture 16x16", thumbnail, Cores::one, thumbnail.pixels(), livePicture, livePictureByHand, smallCommand},
      {"live picture 1280x1024", megapixel, Cores::two, megapixel.pixels(), livePicture, livePictureByHand, transfer},
      {"live picture 4096x3000", twelveMegapixels, Cores::two, twelveMegapixels.pixels(), livePicture, livePictureByHand, transfer},
      {"live picture, cropped", megapixel, Cores::two, megapixel.pixels(), croppedPicture, croppedPictureByHand, transfer},
  };
  return table;
}

}  // namespace fringix::bench
