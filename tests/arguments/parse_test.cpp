#include "arguments/parse.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace fringix::arguments {
namespace {

bool parseWords(const Command& program, const std::vector<const char*>& words) {
  std::vector<const char*> line = {"program"};
  for (const char* word : words) line.push_back(word);
  return parse(program, static_cast<int>(line.size()), line.data());
}

std::string complaint(const Command& program, const std::vector<const char*>& words) {
  try {
    parseWords(program, words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "none";
}

std::string helpOf(const Command& program, const std::vector<const char*>& words) {
  testing::internal::CaptureStdout();
  const bool ran = parseWords(program, words);
  std::string output = testing::internal::GetCapturedStdout();
  EXPECT_FALSE(ran);
  return output;
}

// One argument of each kind.
class Arguments : public testing::Test {
 protected:
  Arguments() {
    program.positional("NAME", &name, "A name").required();
    program.positional("FILE", &files, "Files");
    program.option("-n,--count", &count, "How many").range(1, 999999).valueName("N").showDefault();
    program.option("--part", &part, "Which part");
    program.option("--level", &level, "A level").range(0, 100);
    program.option("--pair", &pair, "Two numbers").valueCount(2);
    program.option("-l,--label", &labels, "Labels").oneAtATime();
    program.option(
        "--colour", [this](const std::string& text) { takeColour(text); }, "A colour");
    program
        .option(
            "--delay", [this](std::int64_t number) { delay = number; }, "A delay")
        .range(0, 10);
    program.option("--host", &host, "A host").check([](const std::string& text) { return text == "here" ? "" : "is far"; });
    program.flag("--json", &json, "As JSON");
    program.flag(
        "--trace", [this] { ++traced; }, "Trace");
    program.run([this] { ++runs; });
  }

  void takeColour(const std::string& text) {
    if (text != "red") throw UsageError("\"" + text + "\" is no colour");
    colour = text;
  }

  Command program{"program", "Does things."};
  std::string name;
  std::vector<std::string> files;
  std::size_t count = 5;
  std::optional<std::uint32_t> part;
  double level = 0;
  std::vector<std::uint32_t> pair;
  std::vector<std::string> labels;
  std::string colour;
  std::int64_t delay = 0;
  std::string host;
  bool json = false;
  int traced = 0;
  int runs = 0;
};

TEST_F(Arguments, GoWhereTheyBelong) {
  EXPECT_TRUE(parseWords(program, {"x", "a", "b", "-n", "3", "--part=2", "--level", "1.5", "--pair", "1", "2", "--colour", "red", "--delay",
                                   "7", "--host", "here", "--json", "--trace"}));
  EXPECT_EQ(name, "x");
  EXPECT_EQ(files, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(part, 2U);
  EXPECT_EQ(level, 1.5);
  EXPECT_EQ(pair, (std::vector<std::uint32_t>{1, 2}));
  EXPECT_EQ(colour, "red");
  EXPECT_EQ(delay, 7);
  EXPECT_EQ(host, "here");
  EXPECT_TRUE(json);
  EXPECT_EQ(traced, 1);
  EXPECT_EQ(runs, 1);
}

TEST_F(Arguments, ThatAreNotGivenLeaveWhatWasThere) {
  EXPECT_TRUE(parseWords(program, {"x"}));
  EXPECT_EQ(count, 5U);
  EXPECT_FALSE(part.has_value());
  EXPECT_FALSE(json);
  EXPECT_EQ(traced, 0);
}

TEST_F(Arguments, OfAListMayComeOneAtATime) {
  EXPECT_TRUE(parseWords(program, {"--label", "one", "x", "-l", "two", "a"}));
  EXPECT_EQ(labels, (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(files, std::vector<std::string>{"a"});
}

TEST_F(Arguments, ThatAreWrongAreNamedWithWhatIsAllowed) {
  EXPECT_EQ(complaint(program, {"x", "-n", "0"}), "--count: \"0\" is no number from 1 to 999999");
  EXPECT_EQ(complaint(program, {"x", "--count", "abc"}), "--count: \"abc\" is no number from 1 to 999999");
  EXPECT_EQ(complaint(program, {"x", "--delay", "11"}), "--delay: \"11\" is no number from 0 to 10");
  EXPECT_EQ(complaint(program, {"x", "--pair", "1", "-2"}), "--pair: \"-2\" is no number from 0 to 4294967295");
  EXPECT_EQ(complaint(program, {"x", "--colour", "loud"}), "--colour: \"loud\" is no colour");
  EXPECT_EQ(complaint(program, {"x", "--host", "there"}), "--host: is far");
  EXPECT_EQ(runs, 0);
}

TEST_F(Arguments, ThatAreMissingAreNamed) {
  EXPECT_EQ(complaint(program, {}), "NAME is required: A name");
  EXPECT_EQ(complaint(program, {"x", "--pair", "1"}), "--pair needs 2 values, not 1: Two numbers");
  EXPECT_EQ(complaint(program, {"x", "--part"}), "--part needs a value: Which part");
  EXPECT_EQ(complaint(program, {"x", "-n"}), "--count needs a value: How many");
  EXPECT_EQ(complaint(program, {"x", "--label"}), "--label needs a value: Labels");
  EXPECT_EQ(complaint(program, {"x", "--label", "a", "--label"}), "--label needs a value: Labels");
  EXPECT_EQ(runs, 0);
}

TEST_F(Arguments, ThatAreTooManyAreNamed) {
  EXPECT_EQ(complaint(program, {"x", "-n", "1", "-n", "2"}), "--count can be given once only");
  for (const char* flag : {"--json=1", "--json=maybe"}) EXPECT_EQ(complaint(program, {"x", flag}), "--json takes no value") << flag;
  EXPECT_EQ(runs, 0);
}

TEST_F(Arguments, ThatAreUnknownAreNamedWithWhatIsNear) {
  EXPECT_EQ(complaint(program, {"x", "--coutn", "3"}), "\"--coutn\" is no option, did you mean \"--count\"?");
  EXPECT_EQ(complaint(program, {"--jsn"}), "\"--jsn\" is no option, did you mean \"--json\"?") << "though NAME is missing as well";
  EXPECT_EQ(complaint(program, {"x", "--dance"}), "\"--dance\" is no option");
}

TEST_F(Arguments, AreInTheHelp) {
  const std::string help = helpOf(program, {"--help"});
  EXPECT_EQ(help.find("Does things.\nUsage: program"), 0U) << help;
  EXPECT_NE(help.find("-n,--count N=5 "), std::string::npos) << help;
  EXPECT_NE(help.find("As JSON"), std::string::npos) << help;
  EXPECT_EQ(runs, 0);
}

TEST_F(Arguments, AreTablesForOthersToRead) {
  const ArgumentFacts& facts = program.arguments()[2].facts();
  EXPECT_EQ(facts.names, "-n,--count");
  EXPECT_EQ(facts.help, "How many");
  EXPECT_EQ(facts.valueName, "N");
  EXPECT_EQ(facts.defaultText, "5");
  EXPECT_EQ(facts.limits.high, 999999);
}

// A program of two commands, one of them with commands of its own.
class Subcommands : public testing::Test {
 protected:
  Subcommands() {
    program.version("program 1.2");
    program.flag("--trace", &traced, "Trace");
    program.note("First note.");
    program.note("Second note.");
    program.subcommand("live", "Fetch").run([this] { ran += "live "; });
    Command& pattern = program.subcommand("pattern", "Fill");
    pattern.subcommand("gray", "Gray code").run([this] { ran += "gray "; });
    Command& upload = pattern.subcommand("upload", "Upload");
    upload.positional("COUNT", &count, "How many").required();
    upload.run([this] {
      if (count > 5) throw UsageError("COUNT", "too many");
      if (count == 5) throw std::runtime_error("no head");
      ran += "upload ";
    });
  }

  Command program{"program", "Does things."};
  bool traced = false;
  std::int32_t count = 0;
  std::string ran;
};

TEST_F(Subcommands, RunWhenTheyAreNamed) {
  EXPECT_TRUE(parseWords(program, {"live"}));
  EXPECT_TRUE(parseWords(program, {"pattern", "upload", "2", "--trace"}));
  EXPECT_EQ(ran, "live upload ");
  EXPECT_TRUE(traced) << "the program's options are known behind its subcommands";
}

TEST_F(Subcommands, ThatAreMistypedAreNamedWithWhatIsNear) {
  EXPECT_EQ(complaint(program, {"lve", "127.0.0.1"}), "\"lve\" is no subcommand, did you mean \"live\"?");
  EXPECT_EQ(complaint(program, {"pattern", "gary"}), "\"gary\" is no subcommand, did you mean \"gray\"?");
  EXPECT_EQ(complaint(program, {"dance"}), "\"dance\" is no subcommand");
  EXPECT_EQ(complaint(program, {"live", "--tace"}), "\"--tace\" is no option, did you mean \"--trace\"?");
  EXPECT_EQ(complaint(program, {"live", "more"}), "\"more\" is one argument too many");
  EXPECT_EQ(ran, "");
}

TEST_F(Subcommands, HaveToBeGiven) {
  EXPECT_EQ(complaint(program, {}), "a subcommand is required, one of live, pattern");
  EXPECT_EQ(complaint(program, {"pattern"}), "a subcommand is required, one of gray, upload");
}

TEST_F(Subcommands, PassOnWhatTheyThrow) {
  EXPECT_EQ(complaint(program, {"pattern", "upload", "6"}), "COUNT: too many");
  EXPECT_THROW(parseWords(program, {"pattern", "upload", "5"}), std::runtime_error);
}

TEST_F(Subcommands, HaveHelpOfTheirOwn) {
  const std::string help = helpOf(program, {"--help"});
  EXPECT_NE(help.find("live "), std::string::npos) << help;
  EXPECT_NE(help.find("First note.\n\nSecond note.\n"), std::string::npos) << help;
  EXPECT_NE(helpOf(program, {"pattern", "upload", "--help"}).find("COUNT "), std::string::npos);
  EXPECT_EQ(helpOf(program, {"--version"}), "program 1.2\n");
  EXPECT_EQ(ran, "");
}

}  // namespace
}  // namespace fringix::arguments
