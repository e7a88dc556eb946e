#include "head/optics/gray_code.h"
#include "head/optics/patterns.h"
#include "running_head.h"

namespace fringix::head {
namespace {

constexpr std::int32_t badParameter = -3;
constexpr std::int32_t outOfMemory = -4;
constexpr std::int32_t unknownSequence = -20;

class SequenceCommandsTest : public RunningHead {
 protected:
  SequenceCommandsTest() : id(static_cast<std::int32_t>(allocate(30))) {}

  const std::vector<Colour>& image(std::uint32_t index) {
    shown = server.model().sequenceImage(static_cast<std::uint32_t>(id), index).pattern;
    return shown->pixels;
  }

  std::int32_t upload(std::string_view command, std::initializer_list<std::int32_t> arguments, const std::vector<std::uint8_t>& bytes) {
    say(command, arguments);
    client->sendBytes(bytes);
    return client->receiveInt();
  }

  const std::int32_t id;
  std::shared_ptr<const Pattern> shown;
};

std::vector<std::uint8_t> counting(std::size_t count) {
  std::vector<std::uint8_t> bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
  return bytes;
}

TEST_F(SequenceCommandsTest, FreeKnowsOnlyWhatWasAllocated) {
  EXPECT_EQ(ask("10MSG_SLSeqFree", {id}), 0);
  EXPECT_EQ(ask("10MSG_SLSeqFree", {id}), unknownSequence);
}

TEST_F(SequenceCommandsTest, RefusesWhenTheMemoryIsFull) {
  HeadSettings settings = smallHead();
  settings.address = "127.0.0.3";
  settings.sequenceMemory = 32 * 20 * 3 * 2;
  HeadServer full(settings);
  full.start();
  RawClient other("127.0.0.3");
  other.greet();
  other.sendText("11MSG_SLSeqAlloc");
  other.sendInts({3});
  EXPECT_EQ(other.receiveInt(), 0) << "no id";
  EXPECT_EQ(other.receiveInt(), outOfMemory);
}

TEST_F(SequenceCommandsTest, StoresUploadedImages) {
  const auto bytes = counting(32 * 20 * 3);
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id, 4, 32, 20, 96}, bytes), 0);
  const auto& pixels = image(4);
  EXPECT_EQ(pixels[0], (Colour{0, 7, 14}));
  EXPECT_EQ(pixels[33], (Colour{bytes[99], bytes[100], bytes[101]}));
}

TEST_F(SequenceCommandsTest, DropsThePaddingOfUploadedRows) {
  const auto bytes = counting(20 * 100);
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id, 4, 32, 20, 100}, bytes), 0);
  EXPECT_EQ(image(4)[32], (Colour{bytes[100], bytes[101], bytes[102]}));
}

TEST_F(SequenceCommandsTest, ReadsARefusedUploadToItsEnd) {
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id, 30, 32, 20, 96}, counting(32 * 20 * 3)), badParameter);
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id + 1, 0, 32, 20, 96}, counting(32 * 20 * 3)), unknownSequence);
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id, 0, 31, 20, 96}, counting(20 * 96)), badParameter);
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id, 0, 32, 20, 95}, counting(20 * 95)), badParameter);
  EXPECT_EQ(upload("12MSG_SLSeqPut", {id, 0, -1, 2, 5000}, counting(10000)), badParameter);
  EXPECT_EQ(upload("16MSG_SLSeqMakeFromLine8", {id, 0, 33}, counting(33)), badParameter);
  EXPECT_EQ(upload("19MSG_SLSeqMakeFromCol24", {id, 0, 0}, {}), badParameter);
  expectInStep();
}

TEST_F(SequenceCommandsTest, SurvivesAnUploadThatWouldNeverEnd) {
  say("12MSG_SLSeqPut", {id, 0, -1, -1, -1});
  for (int i = 0; i < 100; ++i) client->sendBytes(counting(100000));
  client.reset();
  client = std::make_unique<RawClient>();
  client->greet();
  expectInStep();
}

TEST_F(SequenceCommandsTest, SpreadsLinesAndColumns) {
  const auto bytes = counting(96);
  EXPECT_EQ(upload("16MSG_SLSeqMakeFromLine8", {id, 0, 32}, {bytes.begin(), bytes.begin() + 32}), 0);
  EXPECT_EQ(image(0)[32 * 5 + 9], grey(bytes[9]));
  EXPECT_EQ(upload("17MSG_SLSeqMakeFromCol8", {id, 1, 20}, {bytes.begin(), bytes.begin() + 20}), 0);
  EXPECT_EQ(image(1)[32 * 5 + 9], grey(bytes[5]));
  EXPECT_EQ(upload("18MSG_SLSeqMakeFromLine24", {id, 2, 96}, bytes), 0);
  EXPECT_EQ(image(2)[32 * 5 + 9], (Colour{bytes[27], bytes[28], bytes[29]}));
  EXPECT_EQ(upload("19MSG_SLSeqMakeFromCol24", {id, 3, 60}, {bytes.begin(), bytes.begin() + 60}), 0);
  EXPECT_EQ(image(3)[32 * 5 + 9], (Colour{bytes[15], bytes[16], bytes[17]}));
}

TEST_F(SequenceCommandsTest, GeneratesGrayCode) {
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 3, 2, 1, 1}), 0);
  EXPECT_EQ(image(3), makeGrayCode(smallProjector, Axis::rows, 2, true).pixels);
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 3, 24, 0, 0}), badParameter);
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 3, 0, 2, 0}), badParameter);
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 3, 0, 0, 2}), badParameter);
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 30, 0, 0, 0}), badParameter);
  EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id + 1, 0, 0, 0, 0}), unknownSequence);
}

TEST_F(SequenceCommandsTest, GeneratesAllStepsOfAPhaseShift) {
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 10, 4, 16, 0}), 0);
  for (std::uint32_t step = 0; step < 4; ++step)
    EXPECT_EQ(image(10 + step), makePhase(smallProjector, Axis::columns, 16, step, 4).pixels) << step;
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 10, 1, 0, 1}), 0);
  EXPECT_EQ(image(10), makePhase(smallProjector, Axis::rows, 20, 0, 1).pixels) << "period 0 is one over all rows";
}

TEST_F(SequenceCommandsTest, RefusesAPhaseShiftThatDoesNotFitWhole) {
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 27, 4, 16, 0}), badParameter);
  EXPECT_EQ(image(27), Pattern(Size{}).pixels) << "no image was touched";
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, -1, 4, 16, 0}), badParameter);
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 0, 0, 16, 0}), badParameter);
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 0, -1, 16, 0}), badParameter);
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 0, 4, 1, 0}), badParameter);
  EXPECT_EQ(ask("13MSG_SLSeqMakePhase", {id, 0, 4, 16, 2}), badParameter);
}

TEST_F(SequenceCommandsTest, GeneratesImages) {
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 0, 99, 0}), 0);
  EXPECT_EQ(image(0), makeUniform(smallProjector, 99).pixels);
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 1, 200, 3}), 0);
  EXPECT_EQ(image(0), makeCheckerboard(smallProjector, 200, 3).pixels);
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 2, 255, 0}), 0);
  EXPECT_EQ(image(0), makeRamp(smallProjector, Axis::columns, 255).pixels);
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 3, 255, 0}), 0);
  EXPECT_EQ(image(0), makeRamp(smallProjector, Axis::rows, 255).pixels);
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 4, 255, 0}), badParameter);
  EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 0, 256, 0}), badParameter);
}

TEST_F(SequenceCommandsTest, CalculatesTheColumnThatLightsEachPixel) {
  for (std::int32_t image = 0; image < 10; ++image)
    EXPECT_EQ(ask("14MSG_SLSeqMakeGraycode", {id, 20 + image, 4 - image / 2, 0, image % 2}), 0);
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id, 20, 29}), 0);
  const auto bytes = askBytes(2 * frameBytes, "90MSG_SLCalcGrayCode", {20, 5, 20, 1});
  EXPECT_EQ(client->receiveInt(), 0);
  std::size_t lit = 0;
  int previous = 0;
  for (std::size_t x = 0; x < 64; ++x) {
    const int column = bytes[2 * (40 * 64 + x)] | bytes[2 * (40 * 64 + x) + 1] << 8;
    if (column == noCode) continue;
    EXPECT_LT(column, 32);
    EXPECT_GE(column, previous) << "columns grow from left to right along the wall";
    previous = column;
    ++lit;
  }
  EXPECT_GT(lit, 32U);
}

TEST_F(SequenceCommandsTest, AGrayCodeThatWasNotMeasuredIsAllWithoutCode) {
  const std::vector<std::uint8_t> none(2 * frameBytes, 0xFF);
  EXPECT_EQ(askBytes(none.size(), "90MSG_SLCalcGrayCode", {0, 5, 20, 0}), none);
  EXPECT_EQ(client->receiveInt(), badParameter);
  EXPECT_EQ(askBytes(none.size(), "90MSG_SLCalcGrayCode", {0, -1, 20, 0}), none);
  EXPECT_EQ(client->receiveInt(), badParameter);
}

}  // namespace
}  // namespace fringix::head
