#include "fuzz/session_calls.h"

#include <memory>
#include <vector>

#include "api/device_registry.h"
#include "fringix/fringix.h"

namespace fringix::fuzz {

namespace {

using U8 = std::uint8_t;
using I32 = std::int32_t;
using U32 = std::uint32_t;

constexpr std::uint64_t most = 1 << 14;  // bytes of what a caller has room for

// A number's place, or none: both are allowed.
template <class Number>
class Out {
 public:
  explicit Out(Input& input) : place_(input.byte() % 8 == 7 ? nullptr : new Number{}) {}
  Number* get() const { return place_.get(); }

 private:
  std::unique_ptr<Number> place_;
};

// So many bytes and not one more.
class Buffer {
 public:
  explicit Buffer(std::uint64_t size) : bytes_(new U8[size + (size == 0)]()) {}
  U8* get() const { return bytes_.get(); }

 private:
  std::unique_ptr<U8[]> bytes_;
};

ICameraDevice& deviceOf(I32 handle) { return *DeviceRegistry::instance().find(handle); }

struct Size {
  U32 width = 0;
  U32 height = 0;
  bool stated() const { return width < 0x80000000 && height < 0x80000000; }
  std::uint64_t pixels() const { return std::uint64_t{width} * height; }
};

Size cameraOf(I32 handle) {
  Size size;
  SLGetCameraSize(handle, &size.width, &size.height);
  return size;
}

Size projectorOf(I32 handle) {
  Size size;
  SLGetProjectorSize(handle, &size.width, &size.height);
  return size;
}

// A caller has no buffer that is larger, so it makes no such call.
template <class Call>
I32 withRoom(std::uint64_t size, Call call) {
  if (size > most) return SLALL_OKAY;
  const Buffer buffer(size);
  return call(buffer.get());
}

// What is refused needs no room.
std::uint64_t wholePicture(I32 handle) {
  const Size camera = cameraOf(handle);
  return camera.stated() ? camera.pixels() : 0;
}

template <class Call>
I32 pictureOfSize(I32 handle, Input& in, Call call) {
  const Size camera = cameraOf(handle);
  const Size wanted = in.flag() ? camera : Size{in.size(), in.size()};
  return withRoom(wanted.pixels(), [&](U8* buffer) { return call(buffer, wanted.width, wanted.height); });
}

struct Part {
  U32 x, y, width, height;
};

template <class Call>
I32 partOfPicture(Input& in, U32 factor, Call call) {
  const Part part{in.size(), in.size(), in.size(), in.size()};
  const U32 divisor = factor == 0 ? 1 : factor;
  const std::uint64_t size = std::uint64_t{part.width} * part.height / divisor / divisor;
  return withRoom(size, [&](U8* buffer) { return call(buffer, part); });
}

using Generate = I32 (*)(I32, U32, U8, U8, U8, U8);
template <Generate function>
I32 generate(I32 h, Input& in) {
  const U32 sequence = in.size();
  const U8 g1 = in.byte(), g2 = in.byte(), g3 = in.byte(), g4 = in.byte();
  return function(h, sequence, g1, g2, g3, g4);
}

using FromPixels = I32 (*)(I32, U32, U8, const U8*, U32);
template <FromPixels function>
I32 fromPixels(I32 h, Input& in) {
  const U32 sequence = in.size();
  const U8 image = in.byte();
  const U32 length = in.byte();
  return function(h, sequence, image, Buffer(length).get(), length);
}

using GetNumber = I32 (*)(I32, I32*);
template <GetNumber function>
I32 getNumber(I32 h, Input& in) {
  return function(h, Out<I32>(in).get());
}

using SetNumber = I32 (*)(I32, I32);
template <SetNumber function>
I32 setNumber(I32 h, Input& in) {
  return function(h, in.number());
}

using GetRange = I32 (*)(I32, I32*, I32*);
template <GetRange function>
I32 getRange(I32 h, Input& in) {
  const Out<I32> lowest(in), highest(in);
  return function(h, lowest.get(), highest.get());
}

I32 getKey(I32 h, Input&) {
  DeviceKeyEntry key{};
  return SLGetDevKey(h, &key);
}

I32 putImage(I32 h, Input& in) {
  const Size projector = projectorOf(h);
  const bool fits = in.flag();
  const U32 width = fits ? projector.width : in.size(), height = fits ? projector.height : in.size();
  const U32 stride = fits ? width * 3 : in.size(), sequence = in.size();
  const U8 image = in.byte();
  return withRoom(std::uint64_t{height} * stride, [&](U8* data) { return SLSeqPut(h, sequence, data, width, height, stride, image); });
}

template <class Call>
I32 showImage(Input& in, Call call) {
  const I32 width = in.number(), height = in.number(), stride = in.number();
  const std::int64_t size = height > 0 && stride > 0 ? std::int64_t{height} * stride : 0;
  return withRoom(static_cast<std::uint64_t>(size), [&](U8* data) { return call(data, width, height, stride); });
}

I32 setMask(I32 h, Input& in) {
  const I32 selector = in.number(), width = in.number(), height = in.number();
  const U32 size = static_cast<U32>(width) * static_cast<U32>(height);
  return withRoom(size, [&](U8* mask) { return SLSetMask(h, mask, selector, width, height); });
}

I32 calculateGrayCode(I32 h, Input& in) {
  const Size camera = cameraOf(h);
  const bool fits = in.flag();
  const I32 pitch = fits ? static_cast<I32>(camera.width * 2) : in.number();
  const U32 height = fits ? camera.height : in.size();
  const std::uint64_t size = pitch > 0 ? std::uint64_t{height} * static_cast<U32>(pitch) : 0;
  return withRoom(size, [&](U8* result) { return deviceOf(h).CalcGrayCode(result, pitch, height, in.byte(), 1, 2, 3); });
}

I32 lowResolution(I32 h, Input& in) {
  const U32 channel = in.size(), factor = in.size();
  const U32 divisor = factor == 0 ? 1 : factor;
  return withRoom(wholePicture(h) / divisor / divisor, [&](U8* buffer) { return SLGetLiveImageLowRes(h, channel, buffer, factor); });
}

I32 saveData(I32 h, Input& in) {
  const I32 size = in.number();
  const std::string name = in.text(in.upTo(20));
  return withRoom(static_cast<std::uint64_t>(std::max(size, 0)), [&](U8* data) { return SLSaveData(h, data, size, name.c_str()); });
}

I32 loadData(I32 h, Input& in) {
  const std::string name = in.text(in.upTo(20));
  const Out<I32> size(in);
  U8* data = nullptr;
  const I32 result = SLLoadData(h, &data, size.get(), name.c_str());
  if (data != nullptr && *size.get() > 0) data[*size.get() - 1] ^= 1;  // all of it is the caller's
  SLFreeData(data);
  return result;
}

I32 readIni(I32 h, Input& in) {
  const std::string section = in.text(in.upTo(20)), key = in.text(in.upTo(20));
  return SLReadIniInt(h, Out<I32>(in).get(), section.c_str(), key.c_str());
}

I32 writeIni(I32 h, Input& in) {
  const std::string section = in.text(in.upTo(20)), key = in.text(in.upTo(20));
  return SLWriteIniInt(h, in.number(), section.c_str(), key.c_str());
}

I32 execSerial(I32 h, Input& in) {
  const std::string request = in.text(in.upTo(20));
  const I32 size = in.number();
  return withRoom(static_cast<std::uint64_t>(std::max(size, 0)),
                  [&](U8* reply) { return SLExecRS232(h, request.c_str(), reinterpret_cast<char*>(reply), size); });
}

I32 execProjector(I32 h, Input& in) {
  const Out<U8> first(in), second(in), third(in);
  const U8 request = in.byte(), argument = in.byte();
  return SLExecProjCmd(h, request, argument, first.get(), second.get(), third.get());
}

const SessionCall calls[] = {
    {"SLGetDevKey", getKey},
    {"SLSeqAlloc",
     [](I32 h, Input& in) {
       const U32 images = in.size();
       return SLSeqAlloc(h, images, Out<U32>(in).get());
     }},
    {"SLSeqFree", [](I32 h, Input& in) { return SLSeqFree(h, in.size()); }},
    {"SLSeqPut", putImage},
    {"SLSeqMakeGrayCode", generate<SLSeqMakeGrayCode>},
    {"SLSeqMakePhase", generate<SLSeqMakePhase>},
    {"SLSeqMakeImage", generate<SLSeqMakeImage>},
    {"SLSeqMakeFromLine8", fromPixels<SLSeqMakeFromLine8>},
    {"SLSeqMakeFromCol8", fromPixels<SLSeqMakeFromCol8>},
    {"SLSeqMakeFromLine24", fromPixels<SLSeqMakeFromLine24>},
    {"SLSeqMakeFromCol24", fromPixels<SLSeqMakeFromCol24>},
    {"CalcGrayCode", calculateGrayCode},
    {"SLShowImage", [](I32 h, Input& in) { return showImage(in, [h](auto... all) { return SLShowImage(h, all...); }); }},
    {"ShowImage8", [](I32 h, Input& in) { return showImage(in, [h](auto... all) { return deviceOf(h).ShowImage8(all...); }); }},
    {"SLShowImageFromSeq",
     [](I32 h, Input& in) {
       const U32 sequence = in.size();
       return SLShowImageFromSeq(h, sequence, in.byte());
     }},
    {"SLStartMeasurement", [](I32 h, Input& in) { return SLStartMeasurement(h, in.size()); }},
    {"SLStartFromTo",
     [](I32 h, Input& in) {
       const U32 sequence = in.size(), from = in.byte(), to = in.byte();
       return SLStartFromTo(h, sequence, from, to);
     }},
    {"SLGetNumberOfChannels", [](I32 h, Input& in) { return SLGetNumberOfChannels(h, Out<U32>(in).get()); }},
    {"SLGetLiveImage", [](I32 h, Input& in) { return pictureOfSize(h, in, [h](auto... all) { return SLGetLiveImage(h, all...); }); }},
    {"SLGetLiveImageEx",
     [](I32 h, Input& in) {
       return pictureOfSize(h, in, [&](U8* buffer, auto... all) { return SLGetLiveImageEx(h, in.byte(), buffer, all...); });
     }},
    {"SLGetLiveImageROI",
     [](I32 h, Input& in) {
       return partOfPicture(in, 1, [h](U8* to, const Part& p) { return SLGetLiveImageROI(h, to, p.x, p.y, p.width, p.height); });
     }},
    {"SLGetLiveImageROIEx",
     [](I32 h, Input& in) {
       return partOfPicture(in, 1,
                            [&](U8* to, const Part& p) { return SLGetLiveImageROIEx(h, in.byte(), to, p.x, p.y, p.width, p.height); });
     }},
    {"SLGetLiveImageROILowRes",
     [](I32 h, Input& in) {
       const I32 factor = in.number();
       return partOfPicture(in, factor < 1 ? 1 : static_cast<U32>(factor), [&](U8* to, const Part& p) {
         return SLGetLiveImageROILowRes(h, in.byte(), to, p.x, p.y, p.width, p.height, factor);
       });
     }},
    {"SLGetLiveImageLowRes", lowResolution},
    {"SLGetImageIndex",
     [](I32 h, Input& in) { return withRoom(wholePicture(h), [&](U8* to) { return SLGetImageIndex(h, in.byte(), to); }); }},
    {"SLGetImageIndexEx",
     [](I32 h, Input& in) {
       return withRoom(wholePicture(h), [&](U8* to) {
         const U32 channel = in.byte() & 3U;
         return SLGetImageIndexEx(h, channel, in.byte(), to);
       });
     }},
    {"SLGetImageIndexROI",
     [](I32 h, Input& in) {
       return partOfPicture(in, 1,
                            [&](U8* to, const Part& p) { return SLGetImageIndexROI(h, in.byte(), to, p.x, p.y, p.width, p.height); });
     }},
    {"SLGetImageIndexROIEx",
     [](I32 h, Input& in) {
       const U32 channel = in.byte() & 3U;
       return partOfPicture(
           in, 1, [&](U8* to, const Part& p) { return SLGetImageIndexROIEx(h, channel, in.byte(), to, p.x, p.y, p.width, p.height); });
     }},
    {"SLCheckSystem", getNumber<SLCheckSystem>},
    {"SLGetTemperature", getNumber<SLGetTemperature>},
    {"SLGetLEDPower", getNumber<SLGetLEDPower>},
    {"SLSetLEDPower", setNumber<SLSetLEDPower>},
    {"SLGetLEDPowerMinMax", getRange<SLGetLEDPowerMinMax>},
    {"SLGetBrightnessLevel", getNumber<SLGetBrightnessLevel>},
    {"SLSetBrightnessLevel", setNumber<SLSetBrightnessLevel>, true},
    {"SLGetBrightnessMinMax", getRange<SLGetBrightnessMinMax>},
    {"SLGetGain", getNumber<SLGetGain>},
    {"SLSetGain", setNumber<SLSetGain>},
    {"SLGetGainMinMax", getRange<SLGetGainMinMax>},
    {"SLGetCurrentExposure", getNumber<SLGetCurrentExposure>},
    {"SLGetUptime", getNumber<SLGetUptime>},
    {"SLGetProjectorTemperature", getNumber<SLGetProjectorTemperature>},
    {"SLGetProjectorStatus", getNumber<SLGetProjectorStatus>},
    {"SLSetDMDState", setNumber<SLSetDMDState>},
    {"SLSetMask", setMask},
    {"SLClearMask", [](I32 h, Input&) { return SLClearMask(h); }},
    {"SLSetLedPowerValue", [](I32 h, Input& in) { return SLSetLedPowerValue(h, in.byte()); }},
    {"SLSaveData", saveData, true},
    {"SLLoadData", loadData, true},
    {"SLReadIniInt", readIni},
    {"SLWriteIniInt", writeIni},
    {"SLExecRS232", execSerial},
    {"SLExecProjCmd", execProjector},
    {"SLGetGPIOStatus",
     [](I32 h, Input& in) {
       const I32 line = in.number();
       return SLGetGPIOStatus(h, line, Out<I32>(in).get());
     }},
    {"SLSetGPIOValue",
     [](I32 h, Input& in) {
       const I32 line = in.number();
       return SLSetGPIOValue(h, line, in.byte());
     }},
    {"GetSerial", [](I32 h, Input& in) { return deviceOf(h).GetSerial(Out<I32>(in).get()); }},
    {"GetPixelDepth", [](I32 h, Input& in) { return deviceOf(h).GetPixelDepth(Out<I32>(in).get()); }},
    {"EnableCamLogging", [](I32 h, Input&) { return deviceOf(h).EnableCamLogging(); }},
    {"Noop", [](I32 h, Input&) { return deviceOf(h).Noop(); }},
    {"SetOutputSettings",
     [](I32 h, Input& in) {
       const I32 output = in.number();
       return deviceOf(h).SetOutputSettings(output, in.byte());
     }},
    {"ExecOutput", [](I32 h, Input& in) { return deviceOf(h).ExecOutput(in.number()); }},
};

}  // namespace

std::span<const SessionCall> sessionCalls() { return calls; }

}  // namespace fringix::fuzz
