// The simulated head against a client that says anything.
//
// The first byte chooses the head's protocol version, the second the length of a fault's text; then commands: a byte that chooses the
// name (the last ones: none, the input has it), and how many bytes of the input and how many more follow it.
#include <algorithm>

#include "fuzz/conversation_turns.h"
#include "fuzz/input.h"
#include "fuzz/platform/network.h"
#include "fuzz/target.h"
#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/serving/session.h"

namespace fringix::fuzz::head_target {

namespace {

constexpr std::size_t mostCommands = 32;

head::HeadSettings settings(Input& in) {
  constexpr std::int32_t versions[] = {3300, 2399, 2600, 3100};
  head::HeadSettings settings;
  settings.camera = {8, 4};
  settings.projector = {6, 5};
  settings.scene = "plane";
  settings.noise = 0;  // its samples would take most of the time
  settings.protocolVersion = versions[in.byte() % 4];
  settings.imageTime = std::chrono::milliseconds(0);
  settings.roomLimit = std::chrono::milliseconds(0);
  settings.sequenceMemory = settings.pictureMemory = settings.dataMemory = settings.transferMemory = std::size_t{1} << 16;
  settings.clock = [] { return std::chrono::steady_clock::time_point{}; };
  return settings;
}

std::string wireText(const std::string& text) {
  std::string length = std::to_string(text.size());
  return std::string(6 - length.size(), ' ') + length + text;
}

std::string commands(Input& in) {
  static const std::vector<std::string> names = head::commandNames();
  std::string bytes(4, '\0');  // the client's protocol version
  for (std::size_t i = 0; i < mostCommands && !in.empty(); ++i) {
    const std::size_t chosen = in.byte();
    if (chosen < names.size() * 3) bytes += wireText(names[chosen % names.size()]);
    const std::uint8_t shape = in.byte();
    bytes += in.text(shape & 63U) + std::string((shape >> 6U) * 30U, '\1');
  }
  return bytes;
}

void addFault(head::FaultPlan& faults, Input& in) {
  static const std::vector<std::string> names = head::commandNames();
  const std::string text = in.text(in.byte() % 64);
  if (text.empty() || text.find_first_of("sm") != std::string::npos) return;  // those that take time
  try {
    faults.add(head::parseFault(text, names));
  } catch (const std::exception&) {
  }
}

void run(Bytes input) {
  const FreshNetwork fresh;
  Input in(input);
  head::HeadModel model(settings(in));
  head::FaultPlan faults;
  addFault(faults, in);
  network().connection.arriving = commands(in);
  head::TriggerOutput triggers("127.0.0.2");
  const head::Observer unobserved;
  head::Session(platform::Socket::openStream(), {0x7F000001, 5000}, model, faults, triggers, unobserved).run();
  require(network().open == 0, "no socket is left");
}

std::string seedOf(const Conversation& conversation) {
  const std::vector<std::string> names = head::commandNames();
  std::string seed(2, '\0');
  for (const ConversationTurn& turn : conversation) {
    const std::string sent = turn.sent.substr(0, 63);
    seed += static_cast<char>(std::find(names.begin(), names.end(), turn.command) - names.begin());
    seed += static_cast<char>(sent.size());
    seed += sent;
  }
  return seed;
}

std::vector<std::string> seeds() {
  std::vector<std::string> all;
  for (const Conversation& conversation : conversations()) all.push_back(seedOf(conversation));
  return all;
}

const Registered target("head", run, seeds);

}  // namespace

}  // namespace fringix::fuzz::head_target
