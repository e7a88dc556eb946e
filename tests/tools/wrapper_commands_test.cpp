// Every command of the wrapper with the bytes that it puts on the wire: no argument changes its place on the way.
#include <gtest/gtest.h>

#include <fringix/fringix.hpp>
#include <functional>

#include "support/scripted_head.h"

namespace fringix {
namespace {

using test::Bytes;
using test::integer;
using test::integers;
using test::text;

struct CommandCase {
  const char* name;
  bool needsVersion;
  Bytes sent;
  Bytes reply;
  std::function<void(const Device&)> run;
};

// The head's camera and projector have 2 x 1 pixels.
void expectPicture(const Image& image, const char* pixels) {
  EXPECT_EQ(std::string(image.pixels.begin(), image.pixels.end()), pixels);
  EXPECT_EQ(image.height, 1U);
}

const std::vector<std::uint8_t> bytes{'a', 'b', 'c', 'd', 'e', 'f'};
const Bytes done = integer(0);

void expectRange(Range range, std::int32_t min, std::int32_t max) {
  EXPECT_EQ(range.min, min);
  EXPECT_EQ(range.max, max);
}

// Numbers that all differ show what is where.
const CommandCase pictureCases[] = {
    {"ChannelCount", true, text("224MSG_SLNumberOfChannels"), integers(2, 0),
     [](const Device& head) { EXPECT_EQ(head.channelCount(), 2U); }},
    {"LiveImage", false, text("41MSG_SLGetLiveImage"), "ab", [](const Device& head) { expectPicture(head.liveImage(), "ab"); }},
    {"LiveImageOfChannel", true, text("220MSG_SLGetLiveImageEx") + integer(7), "ab",
     [](const Device& head) { expectPicture(head.liveImage(7), "ab"); }},
    {"LiveRegion", false, text("42MSG_SLGetLiveImageROI") + integers(1, 0, 1, 1), "a",
     [](const Device& head) {
       expectPicture(head.liveRegion({1, 0, 1, 1}), "a");
     }},
    {"LiveRegionOfChannel", true, text("221MSG_SLGetLiveImageROIEx") + integers(0, 0, 2, 1, 7), "ab",
     [](const Device& head) {
       expectPicture(head.liveRegion({0, 0, 2, 1}, 7), "ab");
     }},
    {"LiveLowRes", true, text("225MSG_SLGetLiveImageLowRes") + integers(1, 7), "ab",
     [](const Device& head) { expectPicture(head.liveLowRes(1, 7), "ab"); }},
    {"LiveRegionLowRes", true, text("226MSG_SLGetLiveImageROILowRes") + integers(0, 0, 2, 1, 7, 1), "ab",
     [](const Device& head) {
       expectPicture(head.liveRegionLowRes({0, 0, 2, 1}, 1, 7), "ab");
     }},
    {"StoredImage", false, text("43MSG_SLGetImageIndex") + integer(9), "ab",
     [](const Device& head) { expectPicture(head.storedImage(9), "ab"); }},
    {"StoredImageOfChannel", true, text("222MSG_SLGetImageIndexEx") + integers(9, 7), "ab",
     [](const Device& head) { expectPicture(head.storedImage(9, 7), "ab"); }},
    {"StoredRegion", false, text("44MSG_SLGetImageIndexROI") + integers(1, 0, 1, 1, 9), "a",
     [](const Device& head) {
       expectPicture(head.storedRegion(9, {1, 0, 1, 1}), "a");
     }},
    {"StoredRegionOfChannel", true, text("223MSG_SLGetImageIndexROIEx") + integers(1, 0, 1, 1, 9, 7), "a",
     [](const Device& head) {
       expectPicture(head.storedRegion(9, {1, 0, 1, 1}, 7), "a");
     }},
    {"AllocateSequence", false, text("11MSG_SLSeqAlloc") + integer(5), integers(90, 0),
     [](const Device& head) { EXPECT_EQ(head.allocateSequence(5), 90U); }},
    {"FreeSequence", false, text("10MSG_SLSeqFree") + integer(90), done, [](const Device& head) { head.freeSequence(90); }},
    {"PutImage", false, text("12MSG_SLSeqPut") + integers(90, 8, 2, 1, 6) + "abcdef", done,
     [](const Device& head) {
       head.putImage(90, 8, {2, 1, bytes});
     }},
    {"MakeGrayCode", false, text("14MSG_SLSeqMakeGraycode") + integers(90, 1, 2, 3, 4), done,
     [](const Device& head) { head.makeGrayCode(90, 1, 2, 3, 4); }},
    {"MakePhase", false, text("13MSG_SLSeqMakePhase") + integers(90, 1, 2, 3, 4), done,
     [](const Device& head) { head.makePhase(90, 1, 2, 3, 4); }},
    {"MakeImage", false, text("15MSG_SLSeqMakeImage") + integers(90, 1, 2, 3, 4), done,
     [](const Device& head) { head.makeImage(90, 1, 2, 3, 4); }},
    {"MakeFromLine8", false, text("16MSG_SLSeqMakeFromLine8") + integers(90, 8, 6) + "abcdef", done,
     [](const Device& head) { head.makeFromLine8(90, 8, bytes); }},
    {"MakeFromColumn8", false, text("17MSG_SLSeqMakeFromCol8") + integers(90, 8, 6) + "abcdef", done,
     [](const Device& head) { head.makeFromColumn8(90, 8, bytes); }},
    {"MakeFromLine24", false, text("18MSG_SLSeqMakeFromLine24") + integers(90, 8, 6) + "abcdef", done,
     [](const Device& head) { head.makeFromLine24(90, 8, bytes); }},
    {"MakeFromColumn24", false, text("19MSG_SLSeqMakeFromCol24") + integers(90, 8, 6) + "abcdef", done,
     [](const Device& head) { head.makeFromColumn24(90, 8, bytes); }},
};

const CommandCase projectionCases[] = {
    {"Show", false, text("00MSG_SLShowImage24") + integers(2, 1, 6) + "abcdef", done,
     [](const Device& head) {
       head.show({2, 1, bytes});
     }},
    {"ShowFromSequence", false, text("02MSG_SLShowFromSeq") + integers(7, 300), done,
     [](const Device& head) { head.showFromSequence(7, 300); }},
    {"MeasureFromTo", false, text("61MSG_SLStartFromTo") + integers(7, 2, 5), integer(0),
     [](const Device& head) { head.measure(7, 2, 5); }},
};

const CommandCase settingsCases[] = {
    {"CheckSystem", false, text("30MSG_SLCheckSystem"), integer(5), [](const Device& head) { EXPECT_EQ(head.checkSystem(), 5); }},
    {"Temperature", true, text("47MSG_SLGetTemperature"), integers(41, 0), [](const Device& head) { EXPECT_EQ(head.temperature(), 41); }},
    {"Uptime", true, text("240MSG_SLGETUPTIME"), integer(3600), [](const Device& head) { EXPECT_EQ(head.uptime(), 3600); }},
    {"ProjectorTemperature", true, text("260MSG_SLGETPROJTEMP"), integer(52),
     [](const Device& head) { EXPECT_EQ(head.projectorTemperature(), 52); }},
    {"ProjectorStatus", true, text("270MSG_SLGETPROJTEMP"), integer(3), [](const Device& head) { EXPECT_EQ(head.projectorStatus(), 3); }},
    {"Exposure", true, text("280MSG_SLGETEXPOSURE"), integer(20000), [](const Device& head) { EXPECT_EQ(head.exposure(), 20000); }},
    {"LedPower", false, text("50MSG_SLGetLEDPower"), integer(120), [](const Device& head) { EXPECT_EQ(head.ledPower(), 120); }},
    {"LedPowerRange", false, text("46MSG_SLGetProjPowMinMax"), integers(10, 200),
     [](const Device& head) { expectRange(head.ledPowerRange(), 10, 200); }},
    {"SetDirectLedPower", true, text("320MSG_SET_DIRECT_LEDPOWER") + integer(255), done,
     [](const Device& head) { head.setDirectLedPower(255); }},
    {"Brightness", false, text("53MSG_SLGetBrightness"), integer(6), [](const Device& head) { EXPECT_EQ(head.brightness(), 7); }},
    {"BrightnessRange", false, text("54MSG_SLGetBrightnessMinMax"), integers(9, 0),
     [](const Device& head) { expectRange(head.brightnessRange(), 1, 10); }},
    {"SetBrightness", false, text("52MSG_SLSetBrightness") + integer(4), done, [](const Device& head) { head.setBrightness(5); }},
    {"Gain", false, text("56MSG_SLGetGain"), integer(15), [](const Device& head) { EXPECT_EQ(head.gain(), 15); }},
    {"GainRange", false, text("57MSG_SLGetGainMinMax"), integers(100, 10),
     [](const Device& head) { expectRange(head.gainRange(), 10, 100); }},
    {"SetGain", false, text("55MSG_SLSetGain") + integer(20), done, [](const Device& head) { head.setGain(20); }},
    {"SetDmdState", true, text("250MSG_SLSETDMDSTATE") + integer(1), done, [](const Device& head) { head.setDmdState(1); }},
    {"SetMask", true, text("290MSG_SLSetMask") + integers(4, 3, 2) + "abcdef", done,
     [](const Device& head) {
       Image mask(Size{3, 2});
       mask.pixels = bytes;
       head.setMask(mask, 4);
     }},
    {"ClearMask", true, text("300MSG_SLClearMask"), "", [](const Device& head) { head.clearMask(); }},
};

const CommandCase dataCases[] = {
    {"ReadIni", false, text("82MSG_SLReadIniInt") + text("part") + text("key"), integers(77, 0),
     [](const Device& head) { EXPECT_EQ(head.readIni("part", "key"), 77); }},
    {"WriteIni", false, text("83MSG_SLWriteIniInt") + text("part") + text("key") + text("-77"), done,
     [](const Device& head) { head.writeIni("part", "key", -77); }},
    {"Gpio", true, text("84MSG_SLGetGPIOStatus") + integer(6), integers(1, 0), [](const Device& head) { EXPECT_EQ(head.gpio(6), 1); }},
    {"SetGpio", true, text("230MSG_SLSetGPIOValue") + integers(6, 1), done, [](const Device& head) { head.setGpio(6, 1); }},
    {"Serial", true, text("200MSG_SLRS232Exec") + text("ask"), text("the answer") + done,
     [](const Device& head) { EXPECT_EQ(head.serial("ask"), "the answer"); }},
    {"SerialWithTheLongestReply", true, text("200MSG_SLRS232Exec") + text("ask"), text(std::string(999999, 'x')) + done,
     [](const Device& head) { EXPECT_EQ(head.serial("ask"), std::string(999999, 'x')); }},
    {"Projector", true, text("310MSG_EXEC_PROJCMD") + integers(200, 9), integers(11, 12, 255, 0),
     [](const Device& head) {
       EXPECT_EQ(head.projector(200, 9), (std::array<std::uint8_t, 3>{11, 12, 255}));
     }},
};

test::Script scriptFor(const CommandCase& command) {
  using namespace test;
  Script script{reply(integer(1)),
                expect(integer(3300)),
                expect(text("40MSG_SLGetMaxImageSize")),
                reply(integers(2, 1, 0)),
                expect(text("45MSG_SLGetProjDimension")),
                reply(integers(2, 1, 8))};
  if (command.needsVersion) script = script + Script{expect(text("20MSG_SLGetProtocolVersion")), reply(integer(3300))};
  return script + Script{expect(command.sent), reply(command.reply)};
}

class WrapperCommand : public testing::TestWithParam<CommandCase> {};

TEST_P(WrapperCommand, Sends) {
  const CommandCase& command = GetParam();
  test::ScriptedHead head(scriptFor(command));
  {
    const Device device("127.0.0.1");
    command.run(device);
  }
  const Bytes& received = head.received();
  const Bytes end = command.sent + text("ByeBye=");
  EXPECT_EQ(test::readable(received.substr(received.size() - std::min(received.size(), end.size()))), test::readable(end));
}

const auto nameOf = [](const auto& tested) { return std::string(tested.param.name); };
INSTANTIATE_TEST_SUITE_P(Pictures, WrapperCommand, testing::ValuesIn(pictureCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Projection, WrapperCommand, testing::ValuesIn(projectionCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Settings, WrapperCommand, testing::ValuesIn(settingsCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Data, WrapperCommand, testing::ValuesIn(dataCases), nameOf);

// Two commands in one: the range is asked for before the power is sent.
TEST(WrapperSettings, LedPowerIsSentWhenTheHeadTakesIt) {
  test::ScriptedHead head(scriptFor({"", false, text("46MSG_SLGetProjPowMinMax"), integers(10, 200), {}}) +
                          test::Script{test::expect(text("51MSG_SLSetLEDPower") + integer(120)), test::reply(done)});
  const Device device("127.0.0.1");
  EXPECT_NO_THROW(device.setLedPower(120));
}

test::Script saving(const Bytes& answer) { return scriptFor({"", false, text("80MSG_SLSaveDataToFile") + integers(6, 5), answer, {}}); }

TEST(WrapperData, IsSentOnceTheHeadAcceptsIt) {
  test::ScriptedHead head(saving(integer(0)) + test::Script{test::expect(Bytes("name\0", 5) + "abcdef"), test::reply(done)});
  const Device device("127.0.0.1");
  EXPECT_NO_THROW(device.saveData("name", bytes));
}

TEST(WrapperData, RefusalCarriesTheHeadsNumber) {
  test::ScriptedHead head(saving(integer(12)));
  const Device device("127.0.0.1");
  try {
    device.saveData("name", bytes);
    FAIL() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_STREQ(error.operation(), "SLSaveData");
    EXPECT_EQ(error.code(), 12);
  }
}

TEST(WrapperData, EmptyBlockIsRefused) {
  test::ScriptedHead head(scriptFor({"", false, "", "", {}}));
  const Device device("127.0.0.1");
  EXPECT_THROW(device.saveData("name", {}), Error);
}

test::Script loading(const Bytes& block) {
  return scriptFor({"", false, text("81MSG_SLReadDataFromFile") + integer(5), integer(0), {}}) +
         test::Script{test::expect(Bytes("name\0", 5)), test::reply(block)};
}

TEST(WrapperData, IsLoadedWhole) {
  test::ScriptedHead head(loading(integer(6) + "abcdef" + done));
  const Device device("127.0.0.1");
  EXPECT_EQ(device.loadData("name"), bytes);
}

TEST(WrapperData, EmptyFileGivesAnEmptyBlock) {
  test::ScriptedHead head(loading(integer(0)));
  const Device device("127.0.0.1");
  EXPECT_TRUE(device.loadData("name").empty());
}

// The block is handed out before the failure; the leak check of a sanitized run sees whether it is given back.
TEST(WrapperData, LoadThatBreaksIsAFailure) {
  test::ScriptedHead head(loading(integer(1000) + "abc") + test::Script{test::cut()});
  const Device device("127.0.0.1");
  try {
    device.loadData("name");
    FAIL() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), SLCONNECTION_ERROR);
  }
}

TEST(WrapperSettings, MaskWhosePixelsDoNotMatchItsSizeIsRefused) {
  test::ScriptedHead head(scriptFor({"", false, "", "", {}}));
  const Device device("127.0.0.1");
  Image mask(Size{3, 2});
  mask.pixels.pop_back();
  EXPECT_THROW(device.setMask(mask), Error);
}

TEST(WrapperPicture, UploadOfPixelsThatDoNotMatchTheirSizeIsRefused) {
  test::ScriptedHead head(scriptFor({"", false, "", "", {}}));
  const Device device("127.0.0.1");
  EXPECT_THROW(device.putImage(1, 0, {2, 1, {1, 2, 3}}), Error);
}

// Two commands in one: who hears of the measurement is told the serial number.
TEST(WrapperProjection, AMeasurementOfAllImagesAsksForTheSerialNumberToo) {
  using namespace test;
  ScriptedHead head(scriptFor({"", false, text("60MSG_SLStartMeasurement") + integer(7), integer(0), {}}) +
                    Script{expect(text("21MSG_SLGetSerial")), reply(integer(4711))});
  const Device device("127.0.0.1");
  EXPECT_NO_THROW(device.measure(7));
}

template <class Call>
int refusal(Call call) {
  try {
    call();
  } catch (const Error& error) {
    return error.code();
  }
  return SLALL_OKAY;
}

TEST(WrapperProjection, ImageWhosePixelsDoNotMatchItsSizeIsRefused) {
  test::ScriptedHead head(scriptFor({"", false, "", "", {}}));
  const Device device("127.0.0.1");
  const RgbImage lacking{2, 1, {1, 2, 3}};
  const RgbImage endless{0x60000000, 0, {}};  // three times its width is no longer its width
  for (const RgbImage& image : {lacking, endless}) {
    EXPECT_EQ(refusal([&] { device.show(image); }), SLBAD_PARAMETER);
    EXPECT_EQ(refusal([&] { device.putImage(1, 0, image); }), SLBAD_PARAMETER);
  }
}

}  // namespace
}  // namespace fringix
