// A session with a head that answers anything, while the caller does anything.
//
// An input begins with the handshake and goes on with calls: a byte that chooses one, what the head answers to it (a byte: 6 bits count
// bytes of the input, 2 bits how many more there are that stand for pixels), and its arguments.
#include <algorithm>

#include "api/device_registry.h"
#include "fringix/fringix.h"
#include "fuzz/conversation_turns.h"
#include "fuzz/input.h"
#include "fuzz/platform/network.h"
#include "fuzz/session_calls.h"
#include "fuzz/target.h"

namespace fringix::fuzz::session_target {

namespace {

constexpr std::size_t mostCalls = 64;

std::string integer(std::int32_t value) {
  std::string bytes;
  for (std::uint32_t rest = static_cast<std::uint32_t>(value), i = 0; i < 4; ++i, rest >>= 8) bytes += static_cast<char>(rest & 0xFF);
  return bytes;
}

std::string numbers(std::initializer_list<std::int32_t> values) {
  std::string bytes;
  for (const std::int32_t value : values) bytes += integer(value);
  return bytes;
}

// A head of a common size, one of any size, or something that is none.
std::string handshake(Input& in) {
  switch (in.byte() % 4) {
    case 0:
      return in.text(28);
    case 1:
      return numbers({1, in.number(), in.number(), 0, in.number(), in.number(), 0});
    default:
      return numbers({1, 8, 4, 0, 6, 5, 0});
  }
}

void begin(Input& in) {
  Connection& connection = network().connection;
  connection.arriving = handshake(in);
  connection.end = static_cast<End>(in.byte() % 3);
  if (const std::size_t atOnce = in.byte() % 16; atOnce > 0) connection.atOnce = atOnce;
  if (const std::size_t room = in.byte(); room >= 128) connection.room = 8 * (room - 127);
}

void answer(Input& in) {
  const std::uint8_t shape = in.byte();
  network().connection.arriving += in.text(shape & 63U) + std::string((shape >> 6U) * 12U, '\x40');
}

bool isStatus(std::int32_t result) {
  for (const std::int32_t status :
       {SLALL_OKAY, SLBAD_PARAMETER, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLMEASUREMENT_FAILED, SLVERSION_TOO_OLD}) {
    if (result == status) return true;
  }
  return false;
}

void call(std::int32_t handle, Input& in) {
  const auto calls = sessionCalls();
  const SessionCall& chosen = calls[in.byte() % calls.size()];
  answer(in);
  const std::int32_t result = chosen.run(handle, in);
  require(chosen.handsOn || isStatus(result), chosen.name);
  if (result == SLCONNECTION_ERROR && !chosen.handsOn) require(network().open == 0, "a connection that has failed is closed");
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  require(SLGetCameraSize(handle, &width, &height) == SLALL_OKAY, "sizes need no connection");
  if (network().open == 0) require(width == 0xFFFFFFFF && height == 0xFFFFFFFF, "without a connection nothing is known of the head");
}

void run(Bytes input) {
  const FreshNetwork fresh;
  Input in(input);
  begin(in);
  SLSetDebugFlag(in.byte() % 4 == 3);
  std::int32_t handle = 0;
  const std::int32_t opened = SLDevAlloc("127.0.0.1", &handle);
  require(opened == SLALL_OKAY || handle == -1, "no handle without a session");
  if (opened == SLALL_OKAY) {
    for (std::size_t i = 0; i < mostCalls && !in.empty(); ++i) call(handle, in);
    SLDevFree(handle);
    require(SLDevFree(handle) == SLUNKNOWN_DEVICE_ID, "a session is freed once");
    DeviceRegistry::instance().remove(handle);  // what the question has left there
  }
  require(network().open == 0, "no socket is left");
  require(!network().waitedForEver, "nobody waits without a limit");
}

// The number of a function's call; a turn that no call of its own asks for is asked for by the first one.
char callOf(const std::string& function) {
  const auto calls = sessionCalls();
  const auto found = std::find_if(calls.begin(), calls.end(), [&](const SessionCall& call) { return function == call.name; });
  return static_cast<char>(found != calls.end() ? found - calls.begin() : 0);
}

// The examples' answers, behind a head's version, with arguments that are 1.
std::string seedOf(const Conversation& conversation) {
  std::string seed("\2\0\0\0\0\0\10", 7);
  seed += numbers({1001, 3300});
  for (const ConversationTurn& turn : conversation) {
    const std::string answer = turn.answered.substr(0, 63);
    seed += callOf(turn.function);
    seed += static_cast<char>(answer.size());
    seed += answer + std::string(8, '\1');
  }
  return seed;
}

std::vector<std::string> seeds() {
  std::vector<std::string> all;
  for (const Conversation& conversation : conversations()) all.push_back(seedOf(conversation));
  return all;
}

const Registered target("session", run, seeds);

}  // namespace

}  // namespace fringix::fuzz::session_target
