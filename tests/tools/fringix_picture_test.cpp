// The built program fetching parts of live pictures, and pictures that the head has stored.
#include <gtest/gtest.h>

#include "head/serving/head_server.h"
#include "png/png_decoder.h"
#include "program.h"
#include "small_head.h"

namespace fringix::test {
namespace {

head::Picture storedPicture(std::uint8_t first) {
  head::Picture picture;
  picture.resize({64, 48});
  for (std::size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = static_cast<std::uint8_t>(first + i % 97);
  return picture;
}

class FringixPicture : public testing::Test {
 protected:
  FringixPicture() { server_.start(); }

  DecodedPng fetched(const std::string& arguments) {
    const Outcome outcome = runProgram(FRINGIX_TOOL, arguments + " -o " + inQuotes(scratch_ / "out.png"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return decodePng(readBytes(scratch_ / "out.png"));
  }

  std::string complaint(const std::string& arguments) {
    const Outcome outcome = runProgram(FRINGIX_TOOL, arguments + " -o " + inQuotes(scratch_ / "out.png"));
    EXPECT_EQ(outcome.exitCode, 1);
    return outcome.errors.substr(0, outcome.errors.find('\n'));
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{smallHead()};
};

TEST_F(FringixPicture, LiveRegion) {
  const DecodedPng png = fetched("live 127.0.0.1 --roi 1,2,30,20");
  EXPECT_EQ(png.width, 30U);
  EXPECT_EQ(png.height, 20U);
}

TEST_F(FringixPicture, LiveReduced) {
  const DecodedPng png = fetched("live 127.0.0.1 --factor 4 --channel 1");
  EXPECT_EQ(png.width, 16U);
  EXPECT_EQ(png.height, 12U);
}

TEST_F(FringixPicture, LiveRegionReduced) {
  const DecodedPng png = fetched("live 127.0.0.1 --factor 2 --roi 4,4,32,16");
  EXPECT_EQ(png.width, 16U);
  EXPECT_EQ(png.height, 8U);
}

TEST_F(FringixPicture, RegionOutsideIsTold) {
  EXPECT_EQ(complaint("live 127.0.0.1 --roi 40,0,30,10"),
            "fringix: the region does not lie within the picture, or the factor does not divide its sides (SLBAD_PARAMETER, -3)");
}

TEST_F(FringixPicture, FactorThatDoesNotDivideIsTold) {
  EXPECT_EQ(complaint("live 127.0.0.1 --factor 5"),
            "fringix: the factor does not divide the sides of the camera's pictures (SLBAD_PARAMETER, -3)");
}

TEST_F(FringixPicture, ChannelThatTheHeadDoesNotHaveIsToldWithThoseThatItHas) {
  for (const char* command : {"live 127.0.0.1", "picture 127.0.0.1 0"})
    EXPECT_EQ(complaint(std::string(command) + " --channel 9"),
              "fringix: there is no channel 9: the head at 127.0.0.1 has 2 channels, 0 to 1");
}

TEST_F(FringixPicture, RegionThatIsNoneIsWrongUsage) {
  for (const char* region : {"1,2,3", "1,2,3,4,5", "a,2,3,4", "1,2,0,4", "1,2,3,0", "1,2,3,4,", "-1,2,3,4", "1x2,3,4", "1,2x3,4"}) {
    EXPECT_EQ(runProgram(FRINGIX_TOOL, std::string("live 127.0.0.1 --roi=") + region).exitCode, 2) << region;
  }
}

TEST_F(FringixPicture, StoredPicture) {
  server_.model().storePicture({0, 7}, storedPicture(1));
  server_.model().storePicture({1, 7}, storedPicture(2));
  EXPECT_EQ(fetched("picture 127.0.0.1 7").samples, storedPicture(1).pixels);
  EXPECT_EQ(fetched("picture 127.0.0.1 7 --channel 1").samples, storedPicture(2).pixels);
}

TEST_F(FringixPicture, StoredRegion) {
  const head::Picture stored = storedPicture(1);
  server_.model().storePicture({0, 7}, stored);
  const DecodedPng png = fetched("picture 127.0.0.1 7 --roi 5,6,10x2");
  ASSERT_EQ(png.samples.size(), 20U);
  for (std::size_t i = 0; i < 20; ++i) EXPECT_EQ(png.samples[i], stored.pixels[(6 + i / 10) * 64 + 5 + i % 10]);
}

TEST_F(FringixPicture, SeveralStoredPicturesBearTheirNumbers) {
  for (std::uint8_t i = 0; i < 3; ++i) server_.model().storePicture({0, 9U + i}, storedPicture(static_cast<std::uint8_t>(1 + i)));
  const Outcome outcome = runProgram(FRINGIX_TOOL, "picture 127.0.0.1 9 --count 3 -o " + inQuotes(scratch_ / "out.png"));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(decodePng(readBytes(scratch_ / "out-09.png")).samples, storedPicture(1).pixels);
  EXPECT_EQ(decodePng(readBytes(scratch_ / "out-11.png")).samples, storedPicture(3).pixels);
}

TEST_F(FringixPicture, MissingPictureIsTold) {
  EXPECT_EQ(complaint("picture 127.0.0.1 8"), "fringix: the head at 127.0.0.1 has no such picture (SLBAD_PARAMETER, -3)");
  EXPECT_EQ(complaint("picture 127.0.0.1 8 --channel 1"), "fringix: the head at 127.0.0.1 has no such picture (SLSYSTEM_ERROR, -4)");
}

TEST_F(FringixPicture, CountBeyondTheLastNumberIsWrongUsage) {
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "picture 127.0.0.1 250 --count 7").exitCode, 2);
}

TEST(FringixSheet, PutsPicturesTogether) {
  const ScratchFolder scratch;
  head::HeadServer server(smallHead());
  server.start();
  runProgram(FRINGIX_TOOL, "live 127.0.0.1 -n 4 -o " + inQuotes(scratch / "a.png"));
  std::string arguments = "sheet -o " + inQuotes(scratch / "sheet.png") + " --width 64 --columns 4";
  for (int i = 1; i <= 4; ++i) arguments += " " + inQuotes(scratch / ("a-" + std::to_string(i) + ".png"));
  const Outcome outcome = runProgram(FRINGIX_TOOL, arguments);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const DecodedPng png = decodePng(readBytes(scratch / "sheet.png"));
  EXPECT_GT(png.width, 4U * 64);
  EXPECT_GT(png.height, 48U);
  EXPECT_EQ(runProgram(FRINGIX_TOOL, arguments + " --label one --label two").exitCode, 2) << "2 labels for 4 files";
}

}  // namespace
}  // namespace fringix::test
