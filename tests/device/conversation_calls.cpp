#include "device/conversation_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "api/device_registry.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

using U8 = std::uint8_t;
using U32 = std::uint32_t;

U32* asUnsigned(std::int32_t* number) { return reinterpret_cast<U32*>(number); }

template <class Function>
int generate(Call& c, Function function) {
  return function(c.handle(), c.number<U32>("sequence"), c.number<U8>("g1"), c.number<U8>("g2"), c.number<U8>("g3"), c.number<U8>("g4"));
}

template <class Function>
int generateFromPixels(Call& c, Function function) {
  return function(c.handle(), c.number<U32>("sequence"), c.number<U8>("image"), c.bytes("pixels"), c.number<U32>("length"));
}

struct Part {
  U32 x, y, width, height;
};

Part part(const Call& c) { return {c.number<U32>("x"), c.number<U32>("y"), c.number<U32>("width"), c.number<U32>("height")}; }

int loadData(Call& c) {
  U8* data = nullptr;
  std::int32_t* const size = c.into("size");
  const int result = SLLoadData(c.handle(), &data, size, c.content("name").c_str());
  if (data != nullptr && result == SLALL_OKAY) std::copy_n(data, *size, c.intoBytes("data"));
  SLFreeData(data);
  return result;
}

int executeSerial(Call& c) {
  std::array<char, 64> reply{};
  const int result = SLExecRS232(c.handle(), c.content("request").c_str(), reply.data(), static_cast<std::int32_t>(reply.size()));
  if (result == SLALL_OKAY) {
    EXPECT_STREQ(reply.data(), c.content("reply").c_str());
  }
  return result;
}

int executeProjector(Call& c) {
  std::array<U8, 3> results{};
  const int result = SLExecProjCmd(c.handle(), c.number<U8>("request"), c.number<U8>("argument"), &results[0], &results[1], &results[2]);
  *c.into("result1") = results[0];
  *c.into("result2") = results[1];
  *c.into("result3") = results[2];
  return result;
}

int devKey(Call& c) {
  DeviceKeyEntry key{};
  const int result = SLGetDevKey(c.handle(), &key);
  *c.into("version") = key.info1;
  return result;
}

constexpr ConversationCall calls[] = {
    {"100MSG_SLNOOP", [](Call& c) { return c.device().Noop(); }},
    {"20MSG_SLGetProtocolVersion", devKey},
    {"21MSG_SLGetSerial", [](Call& c) { return c.device().GetSerial(c.into("serial")); }},
    {"22MSG_SLGetPixelDepth", [](Call& c) { return c.device().GetPixelDepth(c.into("depth")); }},
    {"70MSG_SLEnableCamLogging", [](Call& c) { return c.device().EnableCamLogging(); }},

    {"10MSG_SLSeqFree", [](Call& c) { return SLSeqFree(c.handle(), c.number<U32>("sequence")); }},
    {"11MSG_SLSeqAlloc", [](Call& c) { return SLSeqAlloc(c.handle(), c.number<U32>("images"), asUnsigned(c.into("sequence"))); }},
    {"12MSG_SLSeqPut",
     [](Call& c) {
       return SLSeqPut(c.handle(), c.number<U32>("sequence"), c.bytes("pixels"), c.number<U32>("width"), c.number<U32>("height"),
                       c.number<U32>("stride"), c.number<U8>("image"));
     }},
    {"13MSG_SLSeqMakePhase", [](Call& c) { return generate(c, SLSeqMakePhase); }},
    {"14MSG_SLSeqMakeGraycode", [](Call& c) { return generate(c, SLSeqMakeGrayCode); }},
    {"15MSG_SLSeqMakeImage", [](Call& c) { return generate(c, SLSeqMakeImage); }},
    {"16MSG_SLSeqMakeFromLine8", [](Call& c) { return generateFromPixels(c, SLSeqMakeFromLine8); }},
    {"17MSG_SLSeqMakeFromCol8", [](Call& c) { return generateFromPixels(c, SLSeqMakeFromCol8); }},
    {"18MSG_SLSeqMakeFromLine24", [](Call& c) { return generateFromPixels(c, SLSeqMakeFromLine24); }},
    {"19MSG_SLSeqMakeFromCol24", [](Call& c) { return generateFromPixels(c, SLSeqMakeFromCol24); }},
    {"90MSG_SLCalcGrayCode",
     [](Call& c) {
       return c.device().CalcGrayCode(c.intoBytes("codes"), 2 * c.device().GetCameraWidth(), static_cast<U32>(c.device().GetCameraHeight()),
                                      c.number<U8>("g1"), c.number<U8>("g2"), c.number<U8>("g3"), c.number<U8>("g4"));
     }},

    {"00MSG_SLShowImage24",
     [](Call& c) { return SLShowImage(c.handle(), c.bytes("pixels"), c.number("width"), c.number("height"), c.number("stride")); }},
    {"01MSG_SLShowImage8",
     [](Call& c) { return c.device().ShowImage8(c.bytes("pixels"), c.number("width"), c.number("height"), c.number("stride")); }},
    {"02MSG_SLShowFromSeq", [](Call& c) { return SLShowImageFromSeq(c.handle(), c.number<U32>("sequence"), c.number<U32>("image")); }},
    {"60MSG_SLStartMeasurement", [](Call& c) { return SLStartMeasurement(c.handle(), c.number<U32>("sequence")); }},
    {"61MSG_SLStartFromTo",
     [](Call& c) { return SLStartFromTo(c.handle(), c.number<U32>("sequence"), c.number<U32>("from"), c.number<U32>("to")); }},

    {"224MSG_SLNumberOfChannels", [](Call& c) { return SLGetNumberOfChannels(c.handle(), asUnsigned(c.into("channels"))); }},
    {"41MSG_SLGetLiveImage", [](Call& c) { return SLGetLiveImage(c.handle(), c.intoBytes("picture"), 8, 4); }},
    {"220MSG_SLGetLiveImageEx",
     [](Call& c) { return SLGetLiveImageEx(c.handle(), c.number<U32>("channel"), c.intoBytes("picture"), 8, 4); }},
    {"42MSG_SLGetLiveImageROI",
     [](Call& c) {
       const auto [x, y, width, height] = part(c);
       return SLGetLiveImageROI(c.handle(), c.intoBytes("picture"), x, y, width, height);
     }},
    {"221MSG_SLGetLiveImageROIEx",
     [](Call& c) {
       const auto [x, y, width, height] = part(c);
       return SLGetLiveImageROIEx(c.handle(), c.number<U32>("channel"), c.intoBytes("picture"), x, y, width, height);
     }},
    {"225MSG_SLGetLiveImageLowRes",
     [](Call& c) { return SLGetLiveImageLowRes(c.handle(), c.number<U32>("channel"), c.intoBytes("picture"), c.number<U32>("factor")); }},
    {"226MSG_SLGetLiveImageROILowRes",
     [](Call& c) {
       const auto [x, y, width, height] = part(c);
       return SLGetLiveImageROILowRes(c.handle(), c.number<U32>("channel"), c.intoBytes("picture"), x, y, width, height,
                                      c.number("factor"));
     }},
    {"43MSG_SLGetImageIndex", [](Call& c) { return SLGetImageIndex(c.handle(), c.number<U8>("image"), c.intoBytes("picture")); }},
    {"222MSG_SLGetImageIndexEx",
     [](Call& c) { return SLGetImageIndexEx(c.handle(), c.number<U32>("channel"), c.number<U8>("image"), c.intoBytes("picture")); }},
    {"44MSG_SLGetImageIndexROI",
     [](Call& c) {
       const auto [x, y, width, height] = part(c);
       return SLGetImageIndexROI(c.handle(), c.number<U8>("image"), c.intoBytes("picture"), x, y, width, height);
     }},
    {"223MSG_SLGetImageIndexROIEx",
     [](Call& c) {
       const auto [x, y, width, height] = part(c);
       return SLGetImageIndexROIEx(c.handle(), c.number<U32>("channel"), c.number<U8>("image"), c.intoBytes("picture"), x, y, width,
                                   height);
     }},

    {"46MSG_SLGetProjPowMinMax", [](Call& c) { return SLGetLEDPowerMinMax(c.handle(), c.into("minimum"), c.into("maximum")); }},
    {"50MSG_SLGetLEDPower", [](Call& c) { return SLGetLEDPower(c.handle(), c.into("power")); }},
    {"51MSG_SLSetLEDPower", [](Call& c) { return SLSetLEDPower(c.handle(), c.number("power")); }, "46MSG_SLGetProjPowMinMax"},
    {"320MSG_SET_DIRECT_LEDPOWER", [](Call& c) { return SLSetLedPowerValue(c.handle(), c.number<U8>("power")); }},
    {"52MSG_SLSetBrightness", [](Call& c) { return SLSetBrightnessLevel(c.handle(), c.number("level") + 1); }},
    {"53MSG_SLGetBrightness", [](Call& c) { return SLGetBrightnessLevel(c.handle(), c.into("level", 1)); }},
    {"54MSG_SLGetBrightnessMinMax", [](Call& c) { return SLGetBrightnessMinMax(c.handle(), c.into("lowest", 1), c.into("highest", 1)); }},
    {"55MSG_SLSetGain", [](Call& c) { return SLSetGain(c.handle(), c.number("gain")); }},
    {"56MSG_SLGetGain", [](Call& c) { return SLGetGain(c.handle(), c.into("gain")); }},
    {"57MSG_SLGetGainMinMax", [](Call& c) { return SLGetGainMinMax(c.handle(), c.into("minimum"), c.into("maximum")); }},
    {"250MSG_SLSETDMDSTATE", [](Call& c) { return SLSetDMDState(c.handle(), c.number("state")); }},
    {"290MSG_SLSetMask",
     [](Call& c) { return SLSetMask(c.handle(), c.bytes("mask"), c.number("selector"), c.number("width"), c.number("height")); }},
    {"300MSG_SLClearMask", [](Call& c) { return SLClearMask(c.handle()); }},

    {"30MSG_SLCheckSystem", [](Call& c) { return SLCheckSystem(c.handle(), c.into("state")); }},
    {"47MSG_SLGetTemperature", [](Call& c) { return SLGetTemperature(c.handle(), c.into("temperature")); }},
    {"240MSG_SLGETUPTIME", [](Call& c) { return SLGetUptime(c.handle(), c.into("uptime")); }},
    {"260MSG_SLGETPROJTEMP", [](Call& c) { return SLGetProjectorTemperature(c.handle(), c.into("temperature")); }},
    {"270MSG_SLGETPROJTEMP", [](Call& c) { return SLGetProjectorStatus(c.handle(), c.into("state")); }},
    {"280MSG_SLGETEXPOSURE", [](Call& c) { return SLGetCurrentExposure(c.handle(), c.into("exposure")); }},

    {"80MSG_SLSaveDataToFile",
     [](Call& c) {
       static const std::uint8_t refused = 0;
       const bool isRefused = c.number("answer") != 0;
       const std::string name = isRefused ? std::string(c.number<std::size_t>("nameSize") - 1, 'n') : c.content("name");
       return SLSaveData(c.handle(), isRefused ? &refused : c.bytes("data"), c.number("size"), name.c_str());
     }},
    {"81MSG_SLReadDataFromFile", loadData},
    {"82MSG_SLReadIniInt",
     [](Call& c) { return SLReadIniInt(c.handle(), c.into("value"), c.content("section").c_str(), c.content("key").c_str()); }},
    {"83MSG_SLWriteIniInt",
     [](Call& c) {
       return SLWriteIniInt(c.handle(), std::stoi(c.content("value")), c.content("section").c_str(), c.content("key").c_str());
     }},

    {"58MSG_SLSetOutputSettings", [](Call& c) { return c.device().SetOutputSettings(c.number("output"), c.number("setting")); }},
    {"59MSG_SLExecOutput", [](Call& c) { return c.device().ExecOutput(c.number("output")); }},
    {"84MSG_SLGetGPIOStatus", [](Call& c) { return SLGetGPIOStatus(c.handle(), c.number("line"), c.into("state")); }},
    {"230MSG_SLSetGPIOValue", [](Call& c) { return SLSetGPIOValue(c.handle(), c.number("line"), c.number("value")); }},
    {"200MSG_SLRS232Exec", executeSerial},
    {"310MSG_EXEC_PROJCMD", executeProjector},
};

}  // namespace

ICameraDevice& Call::device() const { return *DeviceRegistry::instance().find(handle_); }

std::int32_t* Call::into(std::string_view field, std::int32_t more) {
  const auto expected = static_cast<std::uint32_t>(number(field)) + static_cast<std::uint32_t>(more);
  return &numberOutputs_.emplace_back(NumberOutput{std::string(field), static_cast<std::int32_t>(expected), 0}).found;
}

std::uint8_t* Call::intoBytes(std::string_view field) {
  return reinterpret_cast<std::uint8_t*>(
      bytesOutputs_.emplace_back(BytesOutput{std::string(field), Bytes(content(field).size(), 0)}).found.data());
}

void Call::expectOutputs() const {
  for (const auto& [field, expected, found] : numberOutputs_) EXPECT_EQ(found, expected) << field;
  for (const auto& [field, found] : bytesOutputs_) EXPECT_EQ(readable(found), readable(content(field))) << field;
}

const ConversationCall* findCall(std::string_view command) {
  const auto* call = std::find_if(std::begin(calls), std::end(calls), [=](const auto& entry) { return entry.command == command; });
  return call != std::end(calls) ? call : nullptr;
}

}  // namespace fringix::test
