#include <fmt/format.h>

#include <memory>
#include <utility>

#include "console/explain.h"
#include "console/interruption.h"
#include "console/json.h"
#include "console/output.h"
#include "heads/probe.h"
#include "relay/relay.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

constexpr std::chrono::milliseconds interval{50};

struct RecordOptions {
  std::string listening;
  std::string file;
  std::size_t count = 0;  // of connections, then it ends; 0: with Ctrl-C only
  bool compress = false;
};

constexpr const char* note =
    "Clients connect to the address behind --listen, one of this machine's, in place of the head's. They\n"
    "find the head there by its serial number, too, and get its triggers from there. \"fringix recording\n"
    "show FILE\" shows what was recorded, \"fringix-head --replay FILE\" answers as the head did. A disk\n"
    "that takes no more ends the recording, never a connection; the exit code is 1 then.\n"
    "docs/recordings.md describes the files.";

void warn(const std::string& what) { tell("fringix: caution: " + what); }

std::string checkListening(const std::string& text) {
  const std::uint32_t address = platform::parseIpv4(text.c_str());
  if (address != 0 && platform::formatIpv4(address) == text) return "";
  return fmt::format("\"{}\" is no IPv4 address of this machine", text);
}

void requireHead(const Context& context, const std::string& listening) {
  if (context.address == listening)
    throw Failure({fmt::format("{} is the head's own address", listening), "Give another address of this machine with --listen.", "usage"});
  const Finding finding = probe(context.address, context.timeout);
  if (finding.reach != Reach::head) throw Failure(explain(finding, context.address, context.timeout));
}

// Until Ctrl-C, or until so many connections have ended. Tells at once when the recording has ended early.
void waitForTheEnd(const Relay& relay, const recording::Recorder& recorder, std::size_t count) {
  const Interruption interruption;
  bool told = false;
  while (!interruption.waitFor(interval) && (count == 0 || relay.endedConnections() < count)) {
    if (told || !recorder.failed()) continue;
    warn(fmt::format("the recording has ended: {}. Connections go on without it", recorder.failure()));
    told = true;
  }
}

void record(const RecordOptions& options, Context& context) {
  findAddress(context);
  requireHead(context, options.listening);
  Relay relay({context.address, options.listening, context.timeout}, warn);
  recording::Header header = relay.header();
  header.compressed = options.compress;
  recording::Recorder recorder(options.file, header);
  relay.start(recorder);
  tell(context.json ? Json::object({{"state", "recording"}, {"head", context.address}, {"listening", options.listening}}).line()
                    : fmt::format("recording {} for clients at {}, end with Ctrl-C", context.address, options.listening));
  waitForTheEnd(relay, recorder, options.count);
  relay.stop();
  recorder.finish();
  if (recorder.failed())
    throw Failure({fmt::format("the recording has ended early: {}", recorder.failure()),
                   "What was recorded before is in the file; make room, and record again into another one.", "recording"});
}

}  // namespace

void defineRecord(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<RecordOptions>();
  addAddress(command, context);
  command.option("--listen", &options->listening, "Where clients connect to: an IPv4 address of this machine that no head has")
      .valueName("ADDRESS")
      .check(checkListening)
      .required();
  command.option("-o,--output", &options->file, "The recording, a new file").valueName("FILE").required();
  command.flag("--compress", &options->compress, "Compress what is recorded");
  command.option("-n,--count", &options->count, "End when this many connections have ended").valueName("N").atLeast(1);
  command.note(note);
  command.run([options, &context] { record(*options, context); });
}

}  // namespace fringix::tool
