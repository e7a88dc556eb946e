// The built program filling a head with patterns; the head's own memory shows what arrived.
#include <gtest/gtest.h>

#include "files/files.h"
#include "head/optics/patterns.h"
#include "head/serving/head_server.h"
#include "png/png_writer.h"
#include "program.h"
#include "small_head.h"

namespace fringix::test {
namespace {

constexpr head::Size projector{32, 20};

Outcome pattern(const std::string& arguments) { return runProgram(FRINGIX_TOOL, "pattern " + arguments); }

std::vector<std::uint8_t> ramp(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
  return bytes;
}

class FringixPattern : public testing::Test {
 protected:
  FringixPattern() {
    server_.start();
    server_.model().allocateSequence(8, sequence_);
  }

  std::string target() const { return " 127.0.0.1 " + std::to_string(sequence_) + " "; }
  std::vector<head::Colour> image(std::uint32_t index) { return server_.model().sequenceImage(sequence_, index).pattern->pixels; }
  std::string writePng(const std::string& name, const std::vector<std::uint8_t>& png) {
    files::writeFile((scratch_ / name).string(), png);
    return inQuotes(scratch_ / name);
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{smallHead()};
  std::uint32_t sequence_ = 0;
};

TEST_F(FringixPattern, AllocPrintsTheNumberAndFreeTakesIt) {
  const Outcome allocated = pattern("alloc 127.0.0.1 5");
  EXPECT_EQ(allocated.exitCode, 0) << allocated.errors;
  const auto id = static_cast<std::uint32_t>(std::stoul(allocated.output));
  EXPECT_EQ(allocated.output, std::to_string(id) + "\n");
  EXPECT_EQ(server_.model().imageCount(id), 5U);
  EXPECT_EQ(pattern("free 127.0.0.1 " + std::to_string(id)).exitCode, 0);
  EXPECT_EQ(server_.model().imageCount(id), 0U);
}

TEST_F(FringixPattern, UnknownSequenceIsTold) {
  const Outcome outcome = pattern("free 127.0.0.1 4000000000");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors.find("fringix: the head at 127.0.0.1 refuses SLSeqFree (SLSYSTEM_ERROR, -4)\n"), 0U) << outcome.errors;
}

TEST_F(FringixPattern, UploadsGrayAndRgb) {
  const auto gray = ramp(32 * 20);
  const auto rgb = ramp(32 * 20 * 3);
  const Outcome outcome = pattern("upload" + target() + writePng("gray.png", png::encodePngGray8(32, 20, gray)) + " " +
                                  writePng("rgb.png", png::encodePngRgb24(32, 20, rgb)) + " --first 3");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors, "") << "no bar in a pipe";
  std::vector<head::Colour> expected;
  for (const std::uint8_t level : gray) expected.push_back(head::grey(level));
  EXPECT_EQ(image(3), expected);
  expected.clear();
  for (std::size_t i = 0; i < rgb.size(); i += 3) expected.push_back({rgb[i], rgb[i + 1], rgb[i + 2]});
  EXPECT_EQ(image(4), expected);
}

TEST_F(FringixPattern, UploadOfAnotherSizeIsToldAndNothingIsSent) {
  const std::string right = writePng("right.png", png::encodePngGray8(32, 20, ramp(32 * 20)));
  const std::string wrong = writePng("wrong.png", png::encodePngGray8(20, 32, ramp(32 * 20)));
  const Outcome outcome = pattern("upload" + target() + right + " " + wrong);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors, "fringix: " + wrong + " has 20 x 32 pixels, but the projector has 32 x 20\n");
  EXPECT_TRUE(image(0).empty()) << "the head keeps nothing for an image that was never filled";
}

TEST_F(FringixPattern, UploadThatStopsTellsHowManyArrived) {
  const std::string one = writePng("one.png", png::encodePngGray8(32, 20, ramp(32 * 20)));
  const Outcome outcome = pattern("upload" + target() + one + " " + one + " " + one + " --first 6");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("(SLSYSTEM_ERROR, -4): 2 of 3 images had arrived\n"), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.errors.find("\"--first 8\" with " + one + " and what follows it goes on there."), std::string::npos) << outcome.errors;
  EXPECT_FALSE(image(6).empty());
  EXPECT_FALSE(image(7).empty());
}

TEST_F(FringixPattern, GeneratesGrayCode) {
  EXPECT_EQ(pattern("gray" + target() + "2 1 0 1").exitCode, 0);
  EXPECT_EQ(image(2), head::makeGrayCode(projector, head::Axis::columns, 1, true).pixels);
}

TEST_F(FringixPattern, GeneratesPhaseShift) {
  EXPECT_EQ(pattern("phase" + target() + "1 4 8 1").exitCode, 0);
  EXPECT_EQ(image(4), head::makePhase(projector, head::Axis::rows, 8, 3, 4).pixels);
}

TEST_F(FringixPattern, GeneratesImage) {
  EXPECT_EQ(pattern("image" + target() + "6 0 123 0").exitCode, 0);
  EXPECT_EQ(image(6), head::makeUniform(projector, 123).pixels);
}

TEST_F(FringixPattern, GrayCodeBitThatIsOutOfRangeIsTold) {
  const Outcome outcome = pattern("gray" + target() + "0 24 0 0");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors, "fringix: the second number of a Gray code is above 23 (SLBAD_PARAMETER, -3)\n  Give 0 to 23.\n");
}

TEST_F(FringixPattern, LinesAndColumnsOf8And24Bits) {
  const auto line = writePng("line.png", png::encodePngGray8(32, 1, ramp(32)));
  const auto column = writePng("column.png", png::encodePngRgb24(1, 20, ramp(60)));
  EXPECT_EQ(pattern("line" + target() + "0 " + line).exitCode, 0);
  EXPECT_EQ(pattern("column" + target() + "1 " + column).exitCode, 0);
  for (std::size_t i = 0; i < image(0).size(); ++i) {
    const std::size_t x = i % 32;
    const std::size_t y = i / 32;
    EXPECT_EQ(image(0)[i], head::grey(ramp(32)[x]));
    EXPECT_EQ(image(1)[i], (head::Colour{ramp(60)[y * 3], ramp(60)[y * 3 + 1], ramp(60)[y * 3 + 2]}));
  }
  EXPECT_EQ(pattern("line" + target() + "0 " + column).errors, "fringix: " + column + " has 1 x 20 pixels, but a line is 1 pixel high\n");
}

TEST_F(FringixPattern, WrongUsageIsTold) {
  for (const char* arguments : {"", "dance", "alloc 127.0.0.1", "gray 127.0.0.1 1 0 0 0", "gray 127.0.0.1 1 0 0 0 256"}) {
    const Outcome outcome = pattern(arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    EXPECT_EQ(outcome.output, "") << arguments;
    EXPECT_NE(outcome.errors, "") << arguments;
  }
}

TEST_F(FringixPattern, UnknownSubcommandIsNamed) {
  const Outcome outcome = pattern("dance");
  EXPECT_EQ(outcome.errors.find("fringix: \"dance\" is no subcommand\n"), 0U) << outcome.errors;
}

}  // namespace
}  // namespace fringix::test
