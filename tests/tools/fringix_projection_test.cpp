// The built program showing images and measuring; what the head sees and has stored tells whether it did.
#include <gtest/gtest.h>

#include <numeric>

#include "files/files.h"
#include "head/optics/patterns.h"
#include "head/serving/head_server.h"
#include "png/png_writer.h"
#include "program.h"
#include "small_head.h"
#include "support/pattern.h"

namespace fringix::test {
namespace {

Outcome fringixTool(const std::string& arguments) { return runProgram(FRINGIX_TOOL, arguments); }

class FringixProjection : public testing::Test {
 protected:
  FringixProjection() {
    server_.start();
    server_.model().allocateSequence(3, sequence_);  // dark images
    fringixTool("pattern image" + target() + "1 0 255 0");
  }

  std::string target() const { return " 127.0.0.1 " + std::to_string(sequence_) + " "; }

  double brightness() {
    head::Picture picture;
    server_.model().takePicture(0, picture);
    return std::accumulate(picture.pixels.begin(), picture.pixels.end(), 0.0) / static_cast<double>(picture.pixels.size());
  }

  bool isStored(std::uint32_t index) const { return server_.model().storedPicture({0, index}) != nullptr; }

  // Of a failing run: what it says, without what to do next.
  std::string failure(const std::string& arguments) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, 1) << arguments;
    EXPECT_EQ(outcome.output, "") << arguments;
    return outcome.errors.substr(0, outcome.errors.find('\n'));
  }

  std::string writePng(std::uint32_t width, std::uint32_t height, std::uint8_t shade) {
    files::writeFile((scratch_ / "image.png").string(),
                     png::encodePngGray8(width, height, std::vector<std::uint8_t>(std::size_t{width} * height, shade)));
    return inQuotes(scratch_ / "image.png");
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{smallHead()};
  std::uint32_t sequence_ = 0;
  const double white_ = brightness();
};

TEST_F(FringixProjection, ShowsAFile) {
  const Outcome outcome = fringixTool("show 127.0.0.1 " + writePng(32, 20, 0));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output + outcome.errors, "");
  EXPECT_LT(brightness(), white_ / 3);
  EXPECT_EQ(fringixTool("show 127.0.0.1 " + writePng(16, 20, 255)).exitCode, 0) << "smaller than the projector";
  EXPECT_GT(brightness(), white_ / 3);
  EXPECT_LT(brightness(), 0.8 * white_);
}

TEST_F(FringixProjection, ShowsBlackAndWhite) {
  EXPECT_EQ(fringixTool("show 127.0.0.1 black").exitCode, 0);
  EXPECT_LT(brightness(), white_ / 3);
  EXPECT_EQ(fringixTool("show 127.0.0.1 white").exitCode, 0);
  EXPECT_NEAR(brightness(), white_, 3);
}

TEST_F(FringixProjection, ShowsAnImageOfASequence) {
  const std::string show = "show 127.0.0.1 --sequence " + std::to_string(sequence_);
  EXPECT_EQ(fringixTool(show + " 0").exitCode, 0);
  EXPECT_LT(brightness(), white_ / 3);
  EXPECT_EQ(fringixTool(show + " 1").exitCode, 0);
  EXPECT_NEAR(brightness(), white_, 3);
  EXPECT_EQ(failure(show + " 3"), "fringix: the head at 127.0.0.1 does not show that image (SLSYSTEM_ERROR, -4)");
}

TEST_F(FringixProjection, AnImageThatIsTooLargeIsRefused) {
  EXPECT_EQ(failure("show 127.0.0.1 " + writePng(33, 20, 0)), "fringix: the image does not fit on the projector (SLBAD_PARAMETER, -3)");
  EXPECT_EQ(failure("show 127.0.0.1 " + writePng(32, 21, 0)), "fringix: the image does not fit on the projector (SLBAD_PARAMETER, -3)");
  EXPECT_NEAR(brightness(), white_, 3);
}

TEST_F(FringixProjection, WrongUsageIsTold) {
  for (const char* arguments : {"show 127.0.0.1", "show 127.0.0.1 black --sequence 1 0", "show 127.0.0.1 --sequence 1", "measure 127.0.0.1",
                                "measure 127.0.0.1 1 --from 1", "measure 127.0.0.1 1 --to 1", "measure 127.0.0.1 one"}) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    EXPECT_NE(outcome.errors, "") << arguments;
  }
}

TEST_F(FringixProjection, MeasuresAWholeSequence) {
  const Outcome outcome = fringixTool("measure" + target());
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_TRUE(matches(outcome.output, "measured sequence \\d+ in 0\\.\\d\\d s\n")) << outcome.output;
  EXPECT_EQ(outcome.errors, "") << "no line is drawn over in a pipe";
  for (const std::uint32_t index : {0U, 1U, 2U}) EXPECT_TRUE(isStored(index)) << index;
  EXPECT_FALSE(isStored(3));
}

TEST_F(FringixProjection, MeasuresAPart) {
  const Outcome outcome = fringixTool("measure" + target() + "--from 1 --to 2");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_TRUE(matches(outcome.output, "measured sequence \\d+, images 1 to 2, in 0\\.\\d\\d s\n")) << outcome.output;
  EXPECT_FALSE(isStored(0));
  EXPECT_TRUE(isStored(1));
  EXPECT_TRUE(isStored(2));
}

TEST_F(FringixProjection, AFailedMeasurementIsTold) {
  EXPECT_EQ(failure("measure 127.0.0.1 4000000000"),
            "fringix: the head at 127.0.0.1 does not measure with that sequence (SLSYSTEM_ERROR, -4)");
  EXPECT_EQ(failure("measure" + target() + "--from 1 --to 3"),
            "fringix: the head at 127.0.0.1 does not measure with those images (SLSYSTEM_ERROR, -4)");
  server_.model().setMeasurementFault(-2);
  EXPECT_EQ(failure("measure" + target()), "fringix: the measurement failed on the head at 127.0.0.1 (SLMEASUREMENT_FAILED, -30)");
}

}  // namespace
}  // namespace fringix::test
