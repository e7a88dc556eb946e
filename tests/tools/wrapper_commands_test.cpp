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

// Numbers that all differ show what is where.
const CommandCase commandCases[] = {
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

INSTANTIATE_TEST_SUITE_P(Each, WrapperCommand, testing::ValuesIn(commandCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(WrapperPicture, UploadOfPixelsThatDoNotMatchTheirSizeIsRefused) {
  test::ScriptedHead head(scriptFor({"", false, "", "", {}}));
  const Device device("127.0.0.1");
  EXPECT_THROW(device.putImage(1, 0, {2, 1, {1, 2, 3}}), Error);
}

}  // namespace
}  // namespace fringix
