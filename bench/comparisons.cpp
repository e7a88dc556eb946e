#include "comparisons.h"

#include <fringix/fringix.h>

#include <cstring>
#include <memory>
#include <string_view>

namespace fringix::bench {

namespace {

constexpr Head thumbnail{16, 16};
constexpr Head megapixel{1280, 1024};
constexpr Head twelveMegapixels{4096, 3000};

const std::vector<Quantity> smallCommand = {{Metric::medianLatency, 1.10}, {Metric::callRate, std::nullopt}};
const std::vector<Quantity> transfer = {
    {Metric::processorPerGigabyte, 1.05}, {Metric::throughput, 0.90}, {Metric::callRate, std::nullopt}, {Metric::serverLoad, std::nullopt}};
// Memory that is new to the process costs the hand-written client a page fault for each 4 KiB, and the library's block does not.
const std::vector<Quantity> intoNewMemory = {
    {Metric::processorPerGigabyte, 0.60}, {Metric::throughput, 0.90}, {Metric::callRate, std::nullopt}, {Metric::serverLoad, std::nullopt}};

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

constexpr std::uint8_t imageIndex = 3;

std::int32_t storedPicture(std::int32_t handle, const Head&, std::uint8_t* buffer) { return SLGetImageIndex(handle, imageIndex, buffer); }

void storedPictureByHand(MinimalClient& client, const Head& head, std::uint8_t* buffer) {
  client.command("43MSG_SLGetImageIndex");
  client.block(imageIndex);
  client.receive(buffer, head.pixels());
}

struct Region {
  std::uint32_t x, y, width, height;
};
constexpr Region centre{320, 256, 640, 512};
constexpr std::size_t centrePixels = std::size_t{centre.width} * centre.height;

std::int32_t region(std::int32_t handle, const Head&, std::uint8_t* buffer) {
  return SLGetLiveImageROI(handle, buffer, centre.x, centre.y, centre.width, centre.height);
}

void regionByHand(MinimalClient& client, const Head&, std::uint8_t* buffer) {
  client.command("42MSG_SLGetLiveImageROI");
  client.block(centre.x, centre.y, centre.width, centre.height);
  client.receive(buffer, centrePixels);
}

constexpr std::uint32_t channel = 0;
constexpr std::uint32_t factor = 4;
constexpr std::size_t reducedPixels = megapixel.pixels() / factor / factor;

std::int32_t reducedPicture(std::int32_t handle, const Head&, std::uint8_t* buffer) {
  return SLGetLiveImageLowRes(handle, channel, buffer, factor);
}

void reducedPictureByHand(MinimalClient& client, const Head&, std::uint8_t* buffer) {
  client.command("225MSG_SLGetLiveImageLowRes");
  client.block(factor, channel);
  client.receive(buffer, reducedPixels);
}

constexpr std::uint32_t sequence = 7;
constexpr std::uint32_t patternStride = Head::projectorWidth * 3;
constexpr std::size_t patternBytes = std::size_t{patternStride} * Head::projectorHeight;

std::int32_t patternUpload(std::int32_t handle, const Head&, std::uint8_t* buffer) {
  return SLSeqPut(handle, sequence, buffer, Head::projectorWidth, Head::projectorHeight, patternStride, imageIndex);
}

void patternUploadByHand(MinimalClient& client, const Head&, std::uint8_t* buffer) {
  client.command("12MSG_SLSeqPut");
  client.block(sequence, imageIndex, Head::projectorWidth, Head::projectorHeight, patternStride);
  client.bytes(buffer, patternBytes);
  client.requireGoodStatus();
}

constexpr Head dataHead{8192, 8192};  // whose picture has the size of the data block: 64 MiB
constexpr std::string_view fileName = "block.bin";
constexpr std::size_t nameSize = fileName.size() + 1;  // the name crosses with its zero
constexpr std::size_t seenOfBlock = 4096;              // what of a loaded block goes into the buffer, to be compared

std::int32_t dataSave(std::int32_t handle, const Head& head, std::uint8_t* buffer) {
  return SLSaveData(handle, buffer, static_cast<std::int32_t>(head.pixels()), fileName.data());
}

void dataSaveByHand(MinimalClient& client, const Head& head, std::uint8_t* buffer) {
  client.command("80MSG_SLSaveDataToFile");
  client.block(head.pixels());
  client.block(nameSize);
  client.requireGoodStatus();
  client.bytes(fileName.data(), nameSize);
  client.bytes(buffer, head.pixels());
  client.requireGoodStatus();
}

std::int32_t dataLoad(std::int32_t handle, const Head&, std::uint8_t* buffer) {
  std::uint8_t* block = nullptr;
  std::int32_t size = 0;
  const std::int32_t status = SLLoadData(handle, &block, &size, fileName.data());
  if (status == SLALL_OKAY) std::memcpy(buffer, block, seenOfBlock);
  SLFreeData(block);
  return status;
}

void dataLoadByHand(MinimalClient& client, const Head&, std::uint8_t* buffer) {
  client.command("81MSG_SLReadDataFromFile");
  client.block(nameSize);
  client.requireGoodStatus();
  client.bytes(fileName.data(), nameSize);
  const auto size = static_cast<std::size_t>(client.receiveInteger());
  const auto block = std::make_unique_for_overwrite<std::uint8_t[]>(size);
  client.receive(block.get(), size);
  client.requireGoodStatus();
  std::memcpy(buffer, block.get(), seenOfBlock);
}

}  // namespace

const std::vector<Comparison>& comparisons() {
  static const std::vector<Comparison> table = {
      {"live picture 16x16", thumbnail, Cores::one, thumbnail.pixels(), livePicture, livePictureByHand, smallCommand},
      {"live picture 1280x1024", megapixel, Cores::two, megapixel.pixels(), livePicture, livePictureByHand, transfer},
      {"live picture 4096x3000", twelveMegapixels, Cores::two, twelveMegapixels.pixels(), livePicture, livePictureByHand, transfer},
      {"live picture, cropped", megapixel, Cores::two, megapixel.pixels(), croppedPicture, croppedPictureByHand, transfer},
      {"stored picture", megapixel, Cores::two, megapixel.pixels(), storedPicture, storedPictureByHand, transfer},
      {"region 640x512", megapixel, Cores::two, centrePixels, region, regionByHand, transfer},
      {"reduced to 320x256", megapixel, Cores::two, reducedPixels, reducedPicture, reducedPictureByHand, transfer},
      {"pattern upload 1280x800x3", megapixel, Cores::two, patternBytes, patternUpload, patternUploadByHand, transfer},
      {"data block 64 MiB, saved", dataHead, Cores::two, dataHead.pixels(), dataSave, dataSaveByHand, transfer},
      {"data block 64 MiB, loaded", dataHead, Cores::two, dataHead.pixels(), dataLoad, dataLoadByHand, intoNewMemory},
  };
  return table;
}

}  // namespace fringix::bench
