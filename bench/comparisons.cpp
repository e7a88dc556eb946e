#include "comparisons.h"

#include <fringix/fringix.h>

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

}  // namespace

const std::vector<Comparison>& comparisons() {
  static const std::vector<Comparison> table = {
      {"live picture 16x16", thumbnail, Cores::one, thumbnail.pixels(), livePicture, livePictureByHand, smallCommand},
      {"live picture 1280x1024", megapixel, Cores::two, megapixel.pixels(), livePicture, livePictureByHand, transfer},
      {"live picture 4096x3000", twelveMegapixels, Cores::two, twelveMegapixels.pixels(), livePicture, livePictureByHand, transfer},
  };
  return table;
}

}  // namespace fringix::bench
