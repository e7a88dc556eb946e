// The built program and the files that it is told to read and to write.
#include <gtest/gtest.h>

#include "files/files.h"
#include "head/serving/head_server.h"
#include "png/png_decoder.h"
#include "png/png_writer.h"
#include "program.h"
#include "small_head.h"

namespace fringix::test {
namespace {

std::string writePng(const std::filesystem::path& path, std::uint8_t shade) {
  files::writeFile(path.string(), png::encodePngGray8(32, 20, std::vector<std::uint8_t>(32 * 20, shade)));
  return inQuotes(path);
}

// Without a head: a command that asked for one would say that there is none.
std::string complaint(const std::string& arguments, int exitCode) {
  const Outcome outcome = runProgram(FRINGIX_TOOL, arguments);
  EXPECT_EQ(outcome.exitCode, exitCode) << outcome.errors;
  return outcome.errors.substr(0, outcome.errors.find('\n'));
}

class FringixFiles : public testing::Test {
 protected:
  const ScratchFolder scratch_;
};

TEST_F(FringixFiles, PicturesGoToPngFilesOnly) {
  const std::string input = writePng(scratch_ / "in.png", 1);
  for (const char* name : {"out.jpg", "out", "png", "out.png.bak"}) {
    for (const std::string& command : {std::string("live 127.0.0.1"), std::string("picture 127.0.0.1 0"), "sheet " + input}) {
      const std::string told = complaint(command + " -o " + name, 2);
      EXPECT_NE(told.find(std::string("\"") + name + "\" is no name of a PNG file: let it end in .png"), std::string::npos) << told;
    }
  }
  EXPECT_EQ(namesIn(scratch_.path()), std::vector<std::string>{"in.png"});
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "sheet " + input + " -o " + inQuotes(scratch_ / "OUT.PNG")).exitCode, 0);
}

TEST_F(FringixFiles, StandardOutputTakesOnePicture) {
  head::HeadServer server(smallHead());
  server.start();
  const Outcome outcome = runProgram(FRINGIX_TOOL, "live 127.0.0.1 -o - --roi 0,0,64,48");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors.find("-: 64 x 48 pixels, fetched in "), 0U) << outcome.errors;
  EXPECT_EQ(decodePng(outcome.bytes).width, 64U);
  EXPECT_NE(complaint("live 127.0.0.1 -o - -n 2", 2).find("2 pictures are too many for standard output"), std::string::npos);
}

TEST_F(FringixFiles, StandardOutputTakesABlockByteByByte) {
  head::HeadServer server(smallHead());
  server.start();
  const std::string bytes("\r\n\n\x1A\0\r\xFF\n", 8);
  writeBytes(scratch_ / "block", bytes);
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "data save 127.0.0.1 block " + inQuotes(scratch_ / "block")).exitCode, 0);
  const Outcome outcome = runProgram(FRINGIX_TOOL, "data load 127.0.0.1 block -o -");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.bytes, bytes);
}

TEST_F(FringixFiles, SheetReplacesNoneOfItsPictures) {
  const std::string input = writePng(scratch_ / "a.png", 1);
  const std::string before = readBytes(scratch_ / "a.png");
  EXPECT_EQ(complaint("sheet " + input + " -o " + input, 1),
            "fringix: " + input + " is a picture for the sheet: name another file with -o");
  EXPECT_EQ(readBytes(scratch_ / "a.png"), before);
}

TEST_F(FringixFiles, HugeFilesAreRefusedUnread) {
  const std::filesystem::path huge = scratch_ / "huge.png";
  writeBytes(huge, "");
  std::filesystem::resize_file(huge, std::uintmax_t{3} << 30);
  const std::string told = "fringix: cannot read " + inQuotes(huge) + ": it has 3221225472 bytes, and at most ";
  EXPECT_EQ(complaint("data save 127.0.0.1 block " + inQuotes(huge), 1), told + "2147483647 are taken");
  for (const char* command : {"show 127.0.0.1 ", "mask 127.0.0.1 ", "pattern upload 127.0.0.1 1 ", "pattern line 127.0.0.1 1 0 ", "sheet "})
    EXPECT_EQ(complaint(command + inQuotes(huge), 1), told + "1073741824 are taken") << command;
}

TEST_F(FringixFiles, MaskMayBeSavedInColoursThatItDoesNotHave) {
  head::HeadServer server(smallHead());
  server.start();
  std::vector<std::uint8_t> samples(32 * 20 * 3, 9);
  const std::filesystem::path mask = scratch_ / "mask.png";
  files::writeFile(mask.string(), png::encodePngRgb24(32, 20, samples));
  const Outcome outcome = runProgram(FRINGIX_TOOL, "mask 127.0.0.1 " + inQuotes(mask));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  samples.front() = 10;
  files::writeFile(mask.string(), png::encodePngRgb24(32, 20, samples));
  EXPECT_EQ(complaint("mask 127.0.0.1 " + inQuotes(mask), 1),
            "fringix: " + inQuotes(mask) + " has colours: save the mask as a gray picture");
}

}  // namespace
}  // namespace fringix::test
