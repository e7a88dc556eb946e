// Pattern sequences: allocated, uploaded, generated. docs/simulated-head.md says what the four generation parameters mean here.
#include <algorithm>

#include "head/commands/commands.h"
#include "head/commands/received_image.h"
#include "head/commands/transfers.h"
#include "head/optics/gray_code.h"
#include "head/optics/patterns.h"

namespace fringix::head {

namespace {

constexpr std::uint32_t largestBit = 23;
constexpr std::uint32_t usualSquare = 32;
constexpr std::uint32_t mostDecodedBits = 15;  // so that no number is taken for noCode

enum class Kind : std::uint32_t { uniform = 0, checkerboard = 1, rampOfColumns = 2, rampOfRows = 3 };

bool isAxis(std::uint32_t value) { return value <= static_cast<std::uint32_t>(Axis::rows); }

void put(Call& call, std::uint32_t id, std::uint32_t image, std::optional<Pattern> pattern) {
  call.reply(pattern ? call.model.putImage(id, image, std::move(*pattern)) : Status::badParameter);
}

// The same for what is generated, which takes memory as an upload does.
template <class Generate>
void putGenerated(Call& call, std::uint32_t id, std::uint32_t image, Generate generate) {
  const auto room = takeRoomForPattern(call);
  if (!room) return call.reply(Status::outOfMemory);
  put(call, id, image, generate(call.model.settings().projector));
}

void upload(Call& call) {
  const auto [id, image, width, height, stride] = call.wire.readInts<5>();
  auto received = readImage(call, {width, height, stride}, PixelFormat::rgb24);
  if (received.status != Status::ok) return call.reply(received.status);
  if (received.pattern->size != call.model.settings().projector) received.pattern.reset();
  put(call, id, image, std::move(received.pattern));
}

void makeFromUpload(Call& call, Axis axis, PixelFormat format) {
  const auto [id, image, length] = call.wire.readInts<3>();
  const auto profile = readProfile(call.wire, length, format, extent(call.model.settings().projector, axis));
  if (!profile) return call.reply(Status::badParameter);
  putGenerated(call, id, image, [&](Size projector) { return makeFromProfile(projector, axis, *profile); });
}

void makeGrayCodeImage(Call& call) {
  const auto [id, image, bit, axis, inverted] = call.wire.readInts<5>();
  if (bit > largestBit || !isAxis(axis) || inverted > 1) return call.reply(Status::badParameter);
  putGenerated(call, id, image, [axis = axis, bit = bit, inverted = inverted](Size projector) {
    return makeGrayCode(projector, Axis{axis}, bit, inverted == 1);
  });
}

// All steps of one phase shift, in consecutive images.
void makePhaseImages(Call& call) {
  const auto [id, firstImage, steps, period, axis] = call.wire.readInts<5>();
  if (steps < 1 || steps > SequenceStore::longestSequence || period == 1 || !isAxis(axis)) return call.reply(Status::badParameter);
  const Size projector = call.model.settings().projector;
  const auto room = takeRoomForPattern(call);
  if (!room) return call.reply(Status::outOfMemory);
  const double pixels = period > 0 ? period : static_cast<double>(extent(projector, Axis{axis}));
  Status status = call.model.sequenceImage(id, firstImage + steps - 1).status;  // all of them, or none
  for (std::uint32_t step = 0; step < steps && status == Status::ok; ++step) {
    status = call.model.putImage(id, firstImage + step, makePhase(projector, Axis{axis}, pixels, step, steps));
  }
  call.reply(status);
}

std::optional<Pattern> makeKind(Size size, Kind kind, std::uint8_t level, std::uint32_t side) {
  switch (kind) {
    case Kind::uniform:
      return makeUniform(size, level);
    case Kind::checkerboard:
      return makeCheckerboard(size, level, static_cast<std::int32_t>(side == 0 ? usualSquare : side));
    case Kind::rampOfColumns:
      return makeRamp(size, Axis::columns, level);
    case Kind::rampOfRows:
      return makeRamp(size, Axis::rows, level);
  }
  return std::nullopt;
}

void makeImage(Call& call) {
  const auto [id, image, kind, level, side] = call.wire.readInts<5>();
  if (level > 255 || side > 255) return call.reply(Status::badParameter);
  putGenerated(call, id, image, [kind = kind, level = level, side = side](Size projector) {
    return makeKind(projector, Kind{kind}, static_cast<std::uint8_t>(level), side);
  });
}

// The pictures of a Gray code: for each bit, the coarsest first, one under the pattern and one under its inverse.
// Empty when one is missing.
std::vector<SharedPicture> loadGrayCode(const HeadModel& model, std::uint32_t channel, std::uint32_t firstPicture, std::uint32_t bits) {
  if (bits < 1 || bits > mostDecodedBits) return {};
  std::vector<SharedPicture> pictures;
  for (std::uint32_t i = 0; i < 2 * bits; ++i) {
    pictures.push_back(model.storedPicture({channel, firstPicture + i}));
    if (pictures.back() == nullptr) return {};
  }
  return pictures;
}

std::vector<std::uint16_t> decode(const std::vector<SharedPicture>& pictures, std::uint32_t contrast) {
  std::vector<BitPictures> bits;
  for (std::size_t i = 0; i < pictures.size(); i += 2) bits.push_back({pictures[i].get(), pictures[i + 1].get()});
  return decodeGrayCode(bits, static_cast<int>(std::min(contrast, 256U)));
}

void sendNumber(Wire& wire, std::uint16_t number) {
  const std::uint8_t bytes[] = {static_cast<std::uint8_t>(number & 0xFFU), static_cast<std::uint8_t>(number >> 8)};
  wire.writeBytes(bytes, std::size(bytes));
}

// Two bytes for each pixel come before the status, also when there is nothing to compute.
void calculateGrayCode(Call& call) {
  const auto [firstPicture, bits, contrast, channel] = call.wire.readInts<4>();
  const std::size_t size = 2 * call.model.settings().camera.pixels();
  const auto pictures = loadGrayCode(call.model, channel, firstPicture, bits);
  const auto room = pictures.empty() ? std::nullopt : takeRoom(call, size);
  if (room) {
    for (const std::uint16_t number : decode(pictures, contrast)) sendNumber(call.wire, number);
  } else {
    call.wire.writeRepeated(noCode & 0xFFU, size);
  }
  call.reply(pictures.empty() ? Status::badParameter : room ? Status::ok : Status::outOfMemory);
}

constexpr Command commands[] = {
    {"10MSG_SLSeqFree", 0,
     [](Call& call) {
       const auto [id] = call.wire.readInts<1>();
       call.reply(call.model.freeSequence(id));
     }},
    {"11MSG_SLSeqAlloc", 0,
     [](Call& call) {
       const auto [imageCount] = call.wire.readInts<1>();
       std::uint32_t id = 0;
       const Status status = call.model.allocateSequence(imageCount, id);
       call.wire.writeInt(static_cast<std::int32_t>(id));
       call.reply(status);
     }},
    {"12MSG_SLSeqPut", 0, upload},
    {"13MSG_SLSeqMakePhase", 0, makePhaseImages},
    {"14MSG_SLSeqMakeGraycode", 0, makeGrayCodeImage},
    {"15MSG_SLSeqMakeImage", 0, makeImage},
    {"16MSG_SLSeqMakeFromLine8", 0, [](Call& call) { makeFromUpload(call, Axis::columns, PixelFormat::grey8); }},
    {"17MSG_SLSeqMakeFromCol8", 0, [](Call& call) { makeFromUpload(call, Axis::rows, PixelFormat::grey8); }},
    {"18MSG_SLSeqMakeFromLine24", 0, [](Call& call) { makeFromUpload(call, Axis::columns, PixelFormat::rgb24); }},
    {"19MSG_SLSeqMakeFromCol24", 0, [](Call& call) { makeFromUpload(call, Axis::rows, PixelFormat::rgb24); }},
    {"90MSG_SLCalcGrayCode", 0, calculateGrayCode},
};

}  // namespace

CommandFamily sequenceCommands() { return commands; }

}  // namespace fringix::head
