#include <memory>
#include <string>

#include "recordings/anonymise.h"
#include "recordings/cut.h"
#include "recordings/listing.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

void addFile(arguments::Command& command, std::string* file) {
  command.positional("FILE", file, "A recording, as \"fringix record\" makes them").required();
}

void defineShowRecording(arguments::Command& command, Context& context) {
  const auto file = std::make_shared<std::string>();
  addFile(command, file.get());
  addJson(command, context);
  command.note("With --json each line is an object; what is no command has an \"event\".");
  command.run([file, &context] { showRecording(*file, context.json); });
}

void addOutput(arguments::Command& command, std::string* file) {
  command.option("-o,--output", file, "The new recording, a new file").valueName("FILE").required();
}

struct CutOptions {
  std::string file;
  std::string output;
  CutPlace from;
  CutPlace to;
};

void defineCut(arguments::Command& command) {
  const auto options = std::make_shared<CutOptions>();
  addFile(command, &options->file);
  const auto place = [&](const char* name, CutPlace* target, const char* help) {
    command
        .option(
            name, [target](const std::string& text) { *target = toCutPlace(text); }, help)
        .valueName("PLACE");
  };
  place("--from", &options->from, "Where it begins: the number of a command, or a time such as 3.5s; the beginning, if not given");
  place("--to", &options->to, "Where it ends, with this command; the end, if not given");
  addOutput(command, &options->output);
  command.note(
      "The beginning of each connection, and what clients ask for wherever they need it, stays, so that\n"
      "clients can be answered from it.");
  command.run([options] { cutRecording(options->file, options->from, options->to, options->output); });
}

struct AnonymiseOptions {
  std::string file;
  std::string output;
  Anonymity anonymity;
};

void defineAnonymise(arguments::Command& command) {
  const auto options = std::make_shared<AnonymiseOptions>();
  addFile(command, &options->file);
  addOutput(command, &options->output);
  command.flag("--data", &options->anonymity.data, "Data blocks, too");
  command.flag("--pictures", &options->anonymity.pictures, "Pictures, patterns and masks, too");
  command.note(
      "Serial numbers and addresses become others, the same wherever they stand; so do, with the options,\n"
      "the bytes of blocks and pictures, which keep their sizes. Names, texts, settings and times stay:\n"
      "docs/recordings.md has the list.");
  command.run([options] { anonymiseRecording(options->file, options->anonymity, options->output); });
}

}  // namespace

void defineRecording(arguments::Command& command, Context& context) {
  defineShowRecording(command.subcommand("show", "List what was recorded, a line for each command"), context);
  defineCut(command.subcommand("cut", "Write a part of a recording to another one, which can be replayed"));
  defineAnonymise(command.subcommand("anonymise", "Write a recording without serial numbers and addresses to another one"));
}

}  // namespace fringix::tool
