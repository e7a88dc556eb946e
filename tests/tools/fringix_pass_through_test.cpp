// The built program keeping files on a head, changing its configuration and passing commands and masks on.
#include <gtest/gtest.h>

#include "files/files.h"
#include "head/serving/head_server.h"
#include "png/png_writer.h"
#include "program.h"
#include "small_head.h"
#include "support/json.h"

namespace fringix::test {
namespace {

head::HeadSettings settings() {
  head::HeadSettings settings = smallHead();
  settings.dataMemory = 100000;
  settings.serialScript = {{"temperature?", "21 C"}};
  return settings;
}

class FringixPassThrough : public testing::Test {
 protected:
  FringixPassThrough() { server_.start(); }

  Outcome run(const std::string& arguments) { return runProgram(FRINGIX_TOOL, arguments); }
  std::string printed(const std::string& arguments) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
  }
  std::string complaint(const std::string& arguments) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    return outcome.errors.substr(0, outcome.errors.find('\n'));
  }
  std::string write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
    files::writeFile((scratch_ / name).string(), bytes);
    return inQuotes(scratch_ / name);
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{settings()};
};

std::vector<std::uint8_t> someBytes(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
  return bytes;
}

TEST_F(FringixPassThrough, SavedDataComesBack) {
  const auto bytes = someBytes(70000);
  const std::string saved = printed("data save 127.0.0.1 calibration.bin " + write("in", bytes));
  EXPECT_EQ(saved.find("calibration.bin: saved 70000 bytes in "), 0U) << saved;
  EXPECT_EQ(*server_.model().data().load("calibration.bin", server_.model().transfers()).block, bytes);
  const std::string loaded = printed("data load 127.0.0.1 calibration.bin -o " + inQuotes(scratch_ / "out"));
  EXPECT_EQ(loaded.find((scratch_ / "out").string() + ": loaded 70000 bytes in "), 0U) << loaded;
  EXPECT_EQ(files::readFile((scratch_ / "out").string(), 1 << 24), bytes);
}

TEST_F(FringixPassThrough, DataThatTheHeadDoesNotTakeIsToldWithItsNumber) {
  EXPECT_EQ(complaint("data save 127.0.0.1 large " + write("large", someBytes(100001))),
            "fringix: the head at 127.0.0.1 does not take a block of this size and name (2)");
  EXPECT_EQ(complaint("data save 127.0.0.1 ../out " + write("small", someBytes(1))),
            "fringix: the head at 127.0.0.1 could not store the block (SLSYSTEM_ERROR, -4)");
  EXPECT_EQ(complaint("data load 127.0.0.1 " + std::string(70, 'x') + " -o " + inQuotes(scratch_ / "out")),
            "fringix: the head at 127.0.0.1 does not take the block's name (1)");
}

TEST_F(FringixPassThrough, MissingDataWritesNoFile) {
  EXPECT_EQ(complaint("data load 127.0.0.1 missing -o " + inQuotes(scratch_ / "out")),
            "fringix: the head at 127.0.0.1 has no block \"missing\", or it is empty");
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "out"));
}

TEST_F(FringixPassThrough, FilesThatCannotBeSentAreTold) {
  EXPECT_EQ(complaint("data save 127.0.0.1 name " + inQuotes(scratch_ / "missing")),
            "fringix: cannot read \"" + (scratch_ / "missing").string() + "\": No such file or directory");
  EXPECT_EQ(complaint("data save 127.0.0.1 name " + write("empty", {})),
            "fringix: \"" + (scratch_ / "empty").string() + "\" is empty, but a block has at least one byte");
}

TEST_F(FringixPassThrough, ConfigurationIsReadAndWritten) {
  EXPECT_EQ(printed("ini read 127.0.0.1 Camera Width"), "64\n");
  EXPECT_EQ(printed("ini write 127.0.0.1 Camera Exposure 5000"), "");
  EXPECT_EQ(server_.model().configuration().exposure(), 5000);
  EXPECT_EQ(printed("ini write 127.0.0.1 Mine Offset -- -12"), "");
  EXPECT_EQ(printed("ini read 127.0.0.1 Mine Offset"), "-12\n");
}

TEST_F(FringixPassThrough, ConfigurationThatIsRefusedIsTold) {
  EXPECT_EQ(complaint("ini read 127.0.0.1 Camera Colour"),
            "fringix: the head at 127.0.0.1 has no such configuration value (SLSYSTEM_ERROR, -4)");
  EXPECT_EQ(complaint("ini write 127.0.0.1 Camera Width 65"),
            "fringix: the head at 127.0.0.1 refuses the configuration value (SLSYSTEM_ERROR, -4)");
}

TEST_F(FringixPassThrough, LinesAreSetAndRead) {
  EXPECT_EQ(printed("gpio read 127.0.0.1 5"), "0\n");
  EXPECT_EQ(printed("gpio set 127.0.0.1 5 1"), "");
  EXPECT_EQ(printed("gpio read 127.0.0.1 5"), "1\n");
  EXPECT_EQ(complaint("gpio read 127.0.0.1 8"), "fringix: the head at 127.0.0.1 has no such line (SLSYSTEM_ERROR, -4)");
  EXPECT_EQ(complaint("gpio set 127.0.0.1 5 2"), "fringix: the head at 127.0.0.1 refuses to set the line (SLSYSTEM_ERROR, -4)");
}

TEST_F(FringixPassThrough, SerialCommandPrintsTheReply) {
  EXPECT_EQ(printed("serial 127.0.0.1 temperature?"), "21 C\n");
  EXPECT_EQ(complaint("serial 127.0.0.1 dance"),
            "fringix: the device at the serial port of the head at 127.0.0.1 gives no answer (SLSYSTEM_ERROR, -4)");
}

TEST_F(FringixPassThrough, ProjectorCommandPrintsItsThreeResults) {
  EXPECT_EQ(printed("projector 127.0.0.1 3 77"), "77 0 0\n");
  EXPECT_EQ(server_.model().controls().ledPower(), 77);
  EXPECT_EQ(complaint("projector 127.0.0.1 99 0"),
            "fringix: the projector of the head at 127.0.0.1 refuses the command (SLSYSTEM_ERROR, -4)");
  EXPECT_EQ(run("projector 127.0.0.1 256 0").exitCode, 2);
}

TEST_F(FringixPassThrough, MaskIsSetAndCleared) {
  const auto masked = [this] { return (server_.model().projectorStatus() & head::maskIsSet) != 0; };
  EXPECT_EQ(printed("mask 127.0.0.1 " + write("mask.png", png::encodePngGray8(32, 20, someBytes(32 * 20)))), "");
  EXPECT_TRUE(masked());
  EXPECT_EQ(printed("mask 127.0.0.1 clear"), "");
  EXPECT_EQ(printed("get 127.0.0.1 projector-status"), "3\n") << "the head has taken the clearing, which it does not answer";
  EXPECT_FALSE(masked());
}

TEST_F(FringixPassThrough, MaskThatIsRefusedIsTold) {
  const std::string mask = write("mask.png", png::encodePngGray8(32, 20, someBytes(32 * 20)));
  const char* refused = "fringix: the head at 127.0.0.1 refuses the mask (SLSYSTEM_ERROR, -4)";
  EXPECT_EQ(complaint("mask 127.0.0.1 " + write("small.png", png::encodePngGray8(20, 32, someBytes(32 * 20)))), refused);
  EXPECT_EQ(complaint("mask 127.0.0.1 --selector 9 " + mask), refused);
  EXPECT_EQ(complaint("mask 127.0.0.1 " + write("rgb.png", png::encodePngRgb24(32, 20, someBytes(32 * 20 * 3)))),
            "fringix: \"" + (scratch_ / "rgb.png").string() + "\" has colours: save the mask as a gray picture");
}

TEST_F(FringixPassThrough, ResultsAreJsonOnDemand) {
  const auto json = [this](const std::string& arguments) { return Json(printed(arguments + " --json")); };
  EXPECT_EQ(json("ini read 127.0.0.1 Camera Width"), Json(R"({"section": "Camera", "key": "Width", "value": 64})"));
  EXPECT_EQ(json("gpio read 127.0.0.1 5"), Json(R"({"line": 5, "value": 0})"));
  EXPECT_EQ(json("serial 127.0.0.1 temperature?"), Json(R"({"reply": "21 C"})"));
  EXPECT_EQ(json("projector 127.0.0.1 3 77"), Json(R"({"results": [77, 0, 0]})"));
  const Json saved = json("data save 127.0.0.1 block " + write("in", someBytes(70)));
  EXPECT_EQ(saved.at("/name").text(), "block");
  EXPECT_EQ(saved.at("/bytes").number(), 70);
  EXPECT_GT(saved.at("/milliseconds").number(), 0);
  const Json loaded = json("data load 127.0.0.1 block -o " + inQuotes(scratch_ / "out"));
  EXPECT_EQ(loaded.at("/file").text(), (scratch_ / "out").string());
  EXPECT_EQ(loaded.at("/bytes").number(), 70);
  EXPECT_GE(json("pattern alloc 127.0.0.1 1").at("/sequence").number(), 0);
  EXPECT_EQ(printed("ini write 127.0.0.1 Camera Exposure 5000 --json"), "") << "what has no result prints none";
}

TEST_F(FringixPassThrough, WrongUsageIsTold) {
  for (const char* arguments :
       {"data", "data save 127.0.0.1 name", "data load 127.0.0.1 name", "ini read 127.0.0.1 Camera",
        "ini write 127.0.0.1 Camera Exposure long", "gpio", "gpio set 127.0.0.1 1", "serial 127.0.0.1", "mask 127.0.0.1"}) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    EXPECT_NE(outcome.errors, "") << arguments;
  }
}

}  // namespace
}  // namespace fringix::test
