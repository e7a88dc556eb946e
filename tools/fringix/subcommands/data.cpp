#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <memory>

#include "console/explain.h"
#include "console/json.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "files/files.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t largestBlock = 0x7FFFFFFF;  // its size is a signed number of 32 bits
constexpr const char* saved = "saved";
constexpr const char* loaded = "loaded";

struct DataOptions {
  std::string name;
  std::string file;
};

void addName(arguments::Command& command, DataOptions& options) {
  command.positional("NAME", &options.name, "The head's name for the block").required();
}

using Milliseconds = std::chrono::duration<double, std::milli>;

void report(const char* done, const DataOptions& options, std::size_t size, Milliseconds time, bool asJson) {
  const std::string& target = done == saved ? options.name : options.file;
  std::FILE* const stream = done == saved ? stdout : files::reportStream(options.file);
  if (!asJson) {
    const double rate = static_cast<double>(size) / time.count() / 1000;
    return fmt::print(stream, "{}: {} {} bytes in {:.1f} ms, {:.1f} MB/s\n", target, done, size, time.count(), rate);
  }
  const Json json = Json::object({{"name", options.name}, {"file", options.file}, {"bytes", size}, {"milliseconds", time.count()}});
  fmt::print(stream, "{}\n", json.indented());
}

void save(const DataOptions& options, Context& context) {
  const std::vector<std::uint8_t> bytes = files::readFile(options.file, largestBlock);
  if (bytes.empty()) throw std::runtime_error(fmt::format("\"{}\" is empty, but a block has at least one byte", options.file));
  const Device head = openHead(context);
  const auto start = Clock::now();
  {
    const TransientLine line(stderr, isTerminal(stderr), fmt::format("sending {} bytes ...", bytes.size()));
    head.saveData(options.name, bytes);
  }
  report(saved, options, bytes.size(), Clock::now() - start, context.json);
}

void load(const DataOptions& options, Context& context) {
  files::requireWritable(options.file);
  const Device head = openHead(context);
  const auto start = Clock::now();
  const std::vector<std::uint8_t> bytes = [&] {
    const TransientLine line(stderr, isTerminal(stderr), "loading ...");
    return head.loadData(options.name);
  }();
  if (bytes.empty()) {
    throw Failure({fmt::format("the head at {} has no block \"{}\", or it is empty", context.address, options.name),
                   "Check the name. No file was written."});
  }
  const Milliseconds time = Clock::now() - start;
  files::writeFile(options.file, bytes);
  report(loaded, options, bytes.size(), time, context.json);
}

void defineSave(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<DataOptions>();
  addAddress(command, context);
  addName(command, *options);
  command.positional("FILE", &options->file, "File to send").required();
  command.run([options, &context] { save(*options, context); });
}

void defineLoad(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<DataOptions>();
  addAddress(command, context);
  addName(command, *options);
  command.option("-o,--output", &options->file, "File to write; - is standard output").required().valueName("FILE");
  command.run([options, &context] { load(*options, context); });
}

}  // namespace

void defineData(arguments::Command& command, Context& context) {
  defineSave(command.subcommand("save", "Send a file to the head, which keeps it under a name"), context);
  defineLoad(command.subcommand("load", "Fetch a block of bytes from the head into a file"), context);
}

}  // namespace fringix::tool
